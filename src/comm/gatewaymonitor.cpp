#include "comm/gatewaymonitor.h"

#include "link/clock.h"
#include "link/exchange.h"
#include "rack/registry.h"
#include "rack/textroutines.h"
#include "ui/viewbuilders.h"
#include "ui/widgets.h"

#include <QApplication>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

using ViewBuilders::arrayName;

namespace {

constexpr int kChannels = 16;
constexpr int kPauseMs = 10; // between channels of a round

ViewSpec monitorSpec(const QString &formName, const QString &tag, bool versionFirst) {
    ViewSpec spec;
    spec.formName = formName;
    spec.tag = tag;
    spec.channels = kChannels;
    spec.hasUpDown = false;
    spec.versionBeforeCycle = versionFirst;
    spec.headerCaptions = {"Card Type", "Card No.", "Version No."};
    return spec;
}

// Emptied and drawn at once before the new value goes in, so that a value that stays the same
// still blinks as it is read again.
void showValue(QLineEdit *box, const QString &value) {
    box->clear();
    box->repaint();
    box->setText(value);
}

QLineEdit *monitorBox(QWidget *parent, const QString &name, int chars) {
    QLineEdit *box = ViewBuilders::valueField(parent, name, chars);
    box->setAlignment(Qt::AlignLeft);
    return box;
}

} // namespace

// --- frmHLINKdata ------------------------------------------------------------------------------

FrmHLINKdata::FrmHLINKdata(QWidget *parent)
    : CardView(monitorSpec("frmHLINKdata", "HLINK", true), parent) {}

void FrmHLINKdata::buildBody(QVBoxLayout *layout) {
    auto *type = new QHBoxLayout;
    type->addWidget(ViewBuilders::caption(this, QStringLiteral("I/O card type")));
    cardType = monitorBox(this, QStringLiteral("cardType"), 4);
    type->addWidget(cardType);
    type->addSpacing(16);
    type->addWidget(ViewBuilders::caption(this, QStringLiteral("Channel No.")));
    ChNo = monitorBox(this, QStringLiteral("ChNo"), 4);
    type->addWidget(ChNo);
    type->addStretch(1);
    layout->addLayout(type);

    QGroupBox *monitor = MakeFrame(this, QStringLiteral("fraMonitor"), QStringLiteral("monitor"));
    auto *grid = new QGridLayout(monitor);
    grid->setHorizontalSpacing(10);
    grid->setVerticalSpacing(4);
    txtTitle = monitorBox(monitor, QStringLiteral("txtTitle"), 14);
    grid->addWidget(txtTitle, 0, 0, 1, 4, Qt::AlignLeft);
    constexpr int kRowsAColumn = kChannels / 2;
    for (int ch = 1; ch <= kChannels; ++ch) {
        const int row = (ch - 1) % kRowsAColumn + 1;
        const int column = (ch - 1) / kRowsAColumn * 2;
        grid->addWidget(ViewBuilders::caption(monitor, QStringLiteral("CH%1").arg(ch)), row,
                        column);
        QLineEdit *box = monitorBox(monitor, arrayName(QStringLiteral("txtData"), ch), 10);
        box->setAlignment(Qt::AlignRight);
        txtData.at(size_t(ch)) = box;
        grid->addWidget(box, row, column + 1);
    }
    grid->setColumnMinimumWidth(2, 60);
    grid->setColumnStretch(4, 1);
    layout->addWidget(monitor);
    layout->addStretch(1);
}

void FrmHLINKdata::OpenView(const QString &model) {
    CardView::OpenView(CardShowName(model));
}

void FrmHLINKdata::HLINK_Init(const QString &displayName) {
    SetScaleMinMax(displayName);
}

int FrmHLINKdata::EntryNumber(const QString &displayName) {
    if (displayName.size() == 9) return displayName.mid(7, 1).toInt();
    if (displayName.size() == 10) return displayName.mid(7, 2).toInt();
    return 1;
}

void FrmHLINKdata::SetScaleMinMax(const QString &displayName) {
    build();
    AddressCard();
    OpenGroup(QStringLiteral("17"));
    const QString reply =
        ReadData(3, QStringLiteral("17"), QString::number(59 + EntryNumber(txtCardType->text())));
    if (reply.isEmpty()) LinkLostDuringCycle();
    const QStringList fields = ValueAfterColon(reply).split(QLatin1Char(','));
    // The kind of the entry: analog or digital, in or out.
    static const QStringList kTitles = {"Input Value", "Output Value", "Input Value",
                                        "Output Value"};
    static const QStringList kTypes = {"AI", "AO", "DI", "DO"};
    const int kind = fields.value(0).trimmed().toInt();
    const bool known = kind >= 1 && kind <= 4;
    txtTitle->setText(known ? kTitles.at(kind - 1) : QString());
    cardType->setText(known ? kTypes.at(kind - 1) : QString());
    ChNo->setText(fields.value(1));
    channelCount = qBound(0, fields.value(1).trimmed().toInt(), kChannels);
    const QPalette &palette = QApplication::palette();
    for (int ch = 1; ch <= kChannels; ++ch) {
        QLineEdit *box = txtData.at(size_t(ch));
        SetBackColor(box, palette.color(ch <= channelCount ? QPalette::Base : QPalette::Button));
        box->clear();
    }
    CardView::SetScaleMinMax(displayName);
}

void FrmHLINKdata::procCycDataRead() {
    AddressCard();
    for (int ch = 1; ch <= channelCount; ++ch) {
        const QString reply = ReadData(3, QStringLiteral("00"), QString::number(ch + 9));
        if (reply.isEmpty()) {
            LinkLostDuringCycle();
            return;
        }
        // A refusal or a time-out ("CNG", "TMO") has no colon and shows as it is.
        showValue(txtData.at(size_t(ch)), ValueAfterColon(reply));
        Clock::pause(kPauseMs);
    }
}

// --- frmHx -------------------------------------------------------------------------------------

FrmHx::FrmHx(QWidget *parent) : CardView(monitorSpec("frmHx", "Hx", false), parent) {}

void FrmHx::buildBody(QVBoxLayout *layout) {
    auto *box = new QWidget(this);
    auto *grid = new QGridLayout(box);
    grid->setHorizontalSpacing(10);
    grid->setVerticalSpacing(3);
    grid->addWidget(ViewBuilders::caption(box, QStringLiteral("Input Value"), true), 0, 1);
    grid->addWidget(ViewBuilders::caption(box, QStringLiteral("Output Value"), true), 0, 2);
    for (int i = 0; i < kChannels; ++i) {
        QLabel *label = ViewBuilders::caption(box, QString());
        label->setObjectName(arrayName(QStringLiteral("hexIdx"), i));
        label->setMinimumWidth(40);
        hexIdx.at(size_t(i)) = label;
        grid->addWidget(label, i + 1, 0);
        const int ch = i + 1;
        txtParInData.at(size_t(ch)) =
            monitorBox(box, arrayName(QStringLiteral("txtParInData"), ch), 12);
        txtParOutData.at(size_t(ch)) =
            monitorBox(box, arrayName(QStringLiteral("txtParOutData"), ch), 12);
        txtParInData.at(size_t(ch))->setAlignment(Qt::AlignRight);
        txtParOutData.at(size_t(ch))->setAlignment(Qt::AlignRight);
        grid->addWidget(txtParInData.at(size_t(ch)), i + 1, 1);
        grid->addWidget(txtParOutData.at(size_t(ch)), i + 1, 2);
    }
    grid->setColumnStretch(3, 1);
    layout->addWidget(box);
    layout->addStretch(1);
}

int FrmHx::LabelBase(const QString &model) {
    const int n = model.isEmpty() ? 0 : model.back().digitValue();
    return n >= 1 && n <= 8 ? (n - 1) * kChannels : 0;
}

void FrmHx::SetScaleMinMax(const QString &model) {
    build();
    const int base = LabelBase(model);
    for (int i = 0; i < kChannels; ++i)
        hexIdx.at(size_t(i))->setText(QStringLiteral("+%1").arg(base + i));
    CardView::SetScaleMinMax(model);
}

void FrmHx::procCycDataRead() {
    AddressCard();
    for (int ch = 1; ch <= kChannels; ++ch) {
        const QString reply = ReadData(3, QStringLiteral("00"), QString::number(ch + 9));
        if (reply.isEmpty()) {
            LinkLostDuringCycle();
            return;
        }
        QString in = reply;
        QString out = reply;
        if (reply != QLatin1String("CNG") && reply != QLatin1String("TMO")) {
            // "tag:input,output"; a value without a comma has no output.
            const QString value = DeleteDot(ValueAfterColon(reply));
            const qsizetype comma = value.indexOf(QLatin1Char(','));
            in = comma < 0 ? value : value.left(comma);
            out = comma < 0 ? QString() : value.mid(comma + 1);
        }
        showValue(txtParInData.at(size_t(ch)), in);
        showValue(txtParOutData.at(size_t(ch)), out);
        Clock::pause(kPauseMs);
    }
}
