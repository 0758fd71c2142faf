#include "views/discrete/frmqv32.h"

#include "link/clock.h"
#include "link/exchange.h"
#include "rack/textroutines.h"
#include "ui/viewbuilders.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace {

struct Setting {
    const char *caption;
    const char *one;
    const char *zero;
};

// Parameter n is txtDataPara(n), item 14 + n of group 01, Param(n).
const Setting kSettings[] = {
    {"Data Logic", "1:Open", "0:Close"},
    {"Strobe Logic", "1:Open", "0:Close"},
    {"Data Exchange", "1:Big", "0:Little"},
};

ViewSpec qv32Spec() {
    ViewSpec plan;
    plan.formName = QStringLiteral("frmQV32");
    plan.tag = QStringLiteral("QV32");
    plan.channels = 3;
    plan.params = {{"txtDataPara", "", "", "01", [](int n) { return n + 14; }, Cell::Param,
                    [](int n) { return n; }, FieldKind::Int, std::nullopt, QString()}};
    // An empty field is refilled from its cell; anything else is the user's to send.
    plan.acceptance = Acceptance::NotEmpty;
    plan.keyFilters = false;
    plan.progress = {[](int n) { return n * 4; }};
    return plan;
}

} // namespace

FrmQV32::FrmQV32(QWidget *parent) : CardView(qv32Spec(), parent) {}

void FrmQV32::buildBody(QVBoxLayout *layout) {
    auto *box = new QWidget(this);
    auto *grid = new QGridLayout(box);
    grid->setHorizontalSpacing(12);
    txtParData01 = ViewBuilders::valueField(box, "txtParData01", 9);
    txtParData02 = ViewBuilders::valueField(box, "txtParData02", 9);
    int row = 0;
    for (QLineEdit *value : {txtParData01, txtParData02}) {
        grid->addWidget(ViewBuilders::caption(box, "Value"), row, 0);
        grid->addWidget(value, row++, 1);
    }
    grid->setRowMinimumHeight(row++, 12);
    for (int n = 1; n <= 3; ++n, ++row) {
        const Setting &setting = kSettings[n - 1];
        QLineEdit *edit = ViewBuilders::field(box, ViewBuilders::arrayName("txtDataPara", n), 3);
        InstallSelectAllOnFocus(edit);
        grid->addWidget(ViewBuilders::caption(box, setting.caption), row, 0);
        grid->addWidget(edit, row, 1);
        grid->addWidget(ViewBuilders::caption(box, setting.one), row, 2);
        grid->addWidget(ViewBuilders::caption(box, setting.zero), row, 3);
    }
    grid->setColumnStretch(4, 1);
    layout->addWidget(box);
    layout->addStretch();
}

void FrmQV32::procCycDataRead() {
    AddressCard();
    const QString first = ReadData(m_spec.retries, "00", "10");
    const QString second = first.isEmpty() ? QString() : ReadData(m_spec.retries, "00", "11");
    if (second.isEmpty()) {
        LinkLostDuringCycle();
        return;
    }
    for (QLineEdit *value : {txtParData01, txtParData02}) {
        value->clear();
        value->repaint();
    }
    Clock::pause(10);
    txtParData01->setText(DeleteDot(ValueAfterColon(first)));
    txtParData02->setText(DeleteDot(ValueAfterColon(second)));
}
