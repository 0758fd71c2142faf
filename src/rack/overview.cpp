#include "rack/overview.h"

#include "app/widgets.h"
#include "views/common/viewregistry.h"

#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace {

QLabel *cell(QWidget *parent, const QString &name, int width) {
    QLabel *label = MakeLabel(parent, name, QString());
    label->setFrameShape(QFrame::Panel);
    label->setFrameShadow(QFrame::Sunken);
    label->setFixedSize(width, 26);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

QLabel *header(QWidget *parent, const QString &text) {
    QLabel *label = MakeLabel(parent, QString(), text);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

} // namespace

FrmOverview::FrmOverview(QWidget *parent) : QWidget(parent), m_grid(new QGridLayout) {
    setObjectName("frmOverview");
    setFixedSize(kViewWidth, kViewHeight);

    auto *outer = new QVBoxLayout(this);
    QLabel *title = MakeLabel(this, QString(), QStringLiteral(" OverView"));
    QFont big = title->font();
    big.setBold(true);
    big.setPointSizeF(big.pointSizeF() * 1.3);
    title->setFont(big);
    outer->addWidget(title);
    auto *left = new QHBoxLayout;
    left->addLayout(m_grid);
    left->addStretch(1);
    outer->addLayout(left);
    outer->addStretch(1);

    m_grid->setHorizontalSpacing(4);
    m_grid->setVerticalSpacing(4);
    m_grid->addWidget(header(this, QStringLiteral("No")), 1, 0);
    m_grid->addWidget(header(this, QStringLiteral("Type")), 1, 1);
    m_grid->addWidget(header(this, QStringLiteral("In/ Out")), 1, 2);
    for (int slot = 1; slot <= kRows; ++slot) {
        Row &r = m_rows.at(static_cast<size_t>(slot - 1));
        const QString index = QStringLiteral("(%1)").arg(slot);
        r.unitNo = cell(this, "UnitNo" + index, 32);
        r.unitNo->setText(QString::number(slot));
        r.cardType = cell(this, "lblCardType" + index, 110);
        r.cardStatus = cell(this, "lblCardStatus" + index, 56);
        m_grid->addWidget(r.unitNo, gridRow(slot), 0);
        m_grid->addWidget(r.cardType, gridRow(slot), 1);
        m_grid->addWidget(r.cardStatus, gridRow(slot), 2);
    }
}

void FrmOverview::ClearOverviewSlot(int slot) {
    lblCardStatus(slot)->clear();
    lblCardType(slot)->clear();
}

FrmOverview *Overview() {
    if (!IsViewRegistered("frmOverview"))
        RegisterView("frmOverview", [] { return new FrmOverview; });
    return qobject_cast<FrmOverview *>(ViewByName("frmOverview"));
}

void ClearOverviewSlot(int slot) {
    Overview()->ClearOverviewSlot(slot);
}
