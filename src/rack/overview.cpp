#include "rack/overview.h"

#include "rack/cardtable.h"
#include "rack/overviewio.h"
#include "rack/registry.h"
#include "ui/viewregistry.h"
#include "ui/widgets.h"

#include <QApplication>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace {

constexpr int kCellHeight = 26;
// The shared data area of a row: lamps, value fields and wide fields lie on top of each other
// and a layout shows one set, so the area is as wide as the widest set.
constexpr int kDataWidth = 560;
constexpr int kLampWidth = 13;
constexpr int kLampHeight = 18;
constexpr int kLampStep = 15;
constexpr int kByteGap = 8; // between lamps 8|9, 16|17, 24|25, so bytes read at a glance
constexpr int kFieldGap = 2;

QLabel *cell(QWidget *parent, const QString &name, int width) {
    QLabel *label = MakeLabel(parent, name, QString());
    label->setFrameShape(QFrame::Panel);
    label->setFrameShadow(QFrame::Sunken);
    label->setFixedSize(width, kCellHeight);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

QLabel *header(QWidget *parent, const QString &text) {
    QLabel *label = MakeLabel(parent, QString(), text);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

QString indexed(const QString &control, int slot) {
    return QStringLiteral("%1(%2)").arg(control).arg(slot);
}

bool beginsWithAny(const QString &name, std::initializer_list<const char *> prefixes) {
    for (const char *prefix : prefixes)
        if (name.startsWith(QLatin1String(prefix))) return true;
    return false;
}

// Cards that draw their own row: the form that does it, by the name's prefix.
QString ownRowForm(const QString &name) {
    if (name.startsWith(QLatin1String("QTC16"))) return QStringLiteral("frmQTC16");
    if (name.startsWith(QLatin1String("XC8"))) return QStringLiteral("frmXC8");
    if (name.startsWith(QLatin1String("QZ8"))) return QStringLiteral("frmQZ8");
    return QString();
}

// How many lamps a discrete card lights: 8, 16 or 32; 0 for a card with value fields.
int lampCount(const QString &name) {
    if (!beginsWithAny(name, {"QT", "QU", "QA", "QB", "QC", "QD", "QE", "XB"})) return 0;
    if (beginsWithAny(name, {"QT8", "QU8"})) return 8;
    if (beginsWithAny(name,
                      {"QT3", "QU3", "QT6", "QU6", "QA8", "QB8", "QC8", "QD8", "QE8", "XB16"}))
        return 32;
    return 16;
}

} // namespace

QColor NeutralLampColour() {
    return QApplication::palette("QMenu").color(QPalette::Window);
}

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
        r.unitNo = cell(this, indexed("UnitNo", slot), 32);
        r.unitNo->setText(QString::number(slot));
        r.cardType = cell(this, indexed("lblCardType", slot), 110);
        r.cardStatus = cell(this, indexed("lblCardStatus", slot), 56);
        m_grid->addWidget(r.unitNo, gridRow(slot), 0);
        m_grid->addWidget(r.cardType, gridRow(slot), 1);
        m_grid->addWidget(r.cardStatus, gridRow(slot), 2);
        m_grid->addWidget(buildDataArea(r, slot), gridRow(slot), kDataColumn);
        HideSlotData(slot);
        NeutralLamps(slot, 1, kLamps);
    }
}

QWidget *FrmOverview::buildDataArea(Row &r, int slot) {
    auto *area = new QWidget(this);
    area->setObjectName(indexed("fraSlotData", slot));
    area->setFixedSize(kDataWidth, kCellHeight);
    for (int ch = 1; ch <= kLamps; ++ch) {
        QLabel *lamp = cell(area, indexed(QStringLiteral("lblDIDataCh%1").arg(ch), slot), 0);
        lamp->setFixedSize(kLampWidth, kLampHeight);
        lamp->move((ch - 1) * kLampStep + (ch - 1) / 8 * kByteGap, (kCellHeight - kLampHeight) / 2);
        r.lamps.at(static_cast<size_t>(ch - 1)) = lamp;
    }
    // Value fields share the row's width evenly: 8 of them, or 4 wide ones in the same place.
    const auto fields = [&](const char *control, auto &row) {
        const int width = kDataWidth / int(row.size());
        for (int ch = 1; ch <= int(row.size()); ++ch) {
            QLabel *value =
                cell(area, indexed(QLatin1String(control) + QString::number(ch), slot), width);
            value->setFixedWidth(width - kFieldGap);
            value->move((ch - 1) * width, 0);
            row.at(static_cast<size_t>(ch - 1)) = value;
        }
    };
    fields("lblInputDataCh", r.values);
    fields("lblInputDataLCh", r.wideValues);
    return area;
}

QLabel *FrmOverview::lblDIDataCh(int slot, int ch) const {
    return row(slot).lamps.at(static_cast<size_t>(ch - 1));
}

QLabel *FrmOverview::lblInputDataCh(int slot, int ch) const {
    return row(slot).values.at(static_cast<size_t>(ch - 1));
}

QLabel *FrmOverview::lblInputDataLCh(int slot, int ch) const {
    return row(slot).wideValues.at(static_cast<size_t>(ch - 1));
}

void FrmOverview::ClearOverviewSlot(int slot) {
    lblCardStatus(slot)->clear();
    lblCardType(slot)->clear();
    for (QLabel *value : row(slot).values)
        value->clear();
    NeutralLamps(slot, 1, 16);
}

void FrmOverview::HideSlotData(int slot) {
    const Row &r = row(slot);
    for (QLabel *lamp : r.lamps)
        lamp->hide();
    for (QLabel *value : r.values)
        value->hide();
    for (QLabel *value : r.wideValues)
        value->hide();
}

void FrmOverview::showLamps(int slot, int first, int last) {
    for (int ch = 1; ch <= kLamps; ++ch)
        lblDIDataCh(slot, ch)->setVisible(ch >= first && ch <= last);
}

void FrmOverview::ShowChData(const QString &name, int slot) {
    const QString form = ownRowForm(name);
    if (!form.isEmpty()) {
        HideSlotData(slot);
        // Until the card's view is part of the program, its row stays blank.
        if (auto *io = dynamic_cast<OverviewRowIO *>(ViewByName(form))) io->ShowChDataIO(slot);
        return;
    }
    const Row &r = row(slot);
    for (QLabel *value : r.wideValues)
        value->hide();
    const int lamps = lampCount(name);
    for (QLabel *value : r.values)
        value->setVisible(lamps == 0);
    showLamps(slot, 1, lamps);
}

void FrmOverview::SetSlotLamp(int slot, int channel, const QString &bitText) {
    SetBackColor(lblDIDataCh(slot, channel),
                 bitText == QLatin1String("1") ? kLampBitOn : kLampBitOff);
}

void FrmOverview::NeutralLamps(int slot, int first, int last) {
    const QColor neutral = NeutralLampColour();
    for (int ch = first; ch <= last; ++ch)
        SetBackColor(lblDIDataCh(slot, ch), neutral);
}

void FrmOverview::Form_Activate() {
    for (int slot = 1; slot <= kRows; ++slot) {
        const QString shown = DisplayName(CardTable(slot).CardName);
        lblCardType(slot)->setText(shown);
        ShowChData(shown, slot);
    }
}

void FrmOverview::showEvent(QShowEvent *event) {
    QWidget::showEvent(event);
    Form_Activate();
}

FrmOverview *Overview() {
    if (!IsViewRegistered("frmOverview"))
        RegisterView("frmOverview", [] { return new FrmOverview; });
    return qobject_cast<FrmOverview *>(ViewByName("frmOverview"));
}

void ClearOverviewSlot(int slot) {
    Overview()->ClearOverviewSlot(slot);
}
void HideSlotData(int slot) {
    Overview()->HideSlotData(slot);
}
void ShowChData(const QString &name, int slot) {
    Overview()->ShowChData(name, slot);
}
void SetSlotLamp(int slot, int channel, const QString &bitText) {
    Overview()->SetSlotLamp(slot, channel, bitText);
}
