#include "views/common/frmnone.h"

#include "rack/cardtable.h"
#include "rack/registry.h"
#include "ui/widgets.h"

#include <QGroupBox>
#include <QVBoxLayout>

FrmNONE::FrmNONE(QWidget *parent) : QWidget(parent) {
    setObjectName("frmNONE");
    setFixedSize(kViewWidth, kViewHeight);
    auto *layout = new QVBoxLayout(this);
    QGroupBox *frame = MakeFrame(this, "fraNONE", QStringLiteral("NONE"));
    frame->setFixedSize(300, 120);
    layout->addWidget(frame);
    layout->addStretch(1);
}

void FrmNONE::OpenView(const QString &) {
    SelFormName = QStringLiteral("NONE");
    ShowView(this);
}
