#include "views/analog/temperature.h"

#include "link/clock.h"
#include "link/exchange.h"
#include "rack/registry.h"
#include "rack/textroutines.h"
#include "ui/viewbuilders.h"
#include "ui/widgets.h"

#include <QApplication>
#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTimer>
#include <QVBoxLayout>

namespace {

constexpr int kMixedChannels = 4; // QFR: channels that may be resistance inputs
const QString kResistanceInput = QStringLiteral("Pt1000");
const QString kVoltageInput = QStringLiteral("0-10V DC");

// The number a text begins with, as the card's version is compared: "120" of "1.20" once the
// dot is gone; no number at the start gives 0.
double LeadingNumber(const QString &text) {
    static const QRegularExpression number(QStringLiteral("^\\s*[-+]?\\d*\\.?\\d*"));
    return number.match(text).captured().trimmed().toDouble();
}

QList<ParamSpec> temperatureParams(const TemperatureSpec &row) {
    using namespace StandardParams;
    const int first = row.firstBaseCell;
    ParamSpec zeroBase{"txtZBase",
                       "Base",
                       "Zero",
                       "02",
                       [](int ch) { return 2 * ch + 8; },
                       Cell::Param,
                       [first](int ch) { return (ch - 1) * 2 + first; },
                       FieldKind::Real,
                       std::nullopt,
                       QString()};
    zeroBase.channels = row.baseChannels;
    ParamSpec fullBase = zeroBase;
    fullBase.control = "txtFBase";
    fullBase.caption = "Full";
    fullBase.item = [](int ch) { return 2 * ch + 9; };
    fullBase.cell = [first](int ch) { return (ch - 1) * 2 + first + 1; };
    // The flags follow the bases of all channels in the open group 02.
    ParamSpec flag = unusedFlag();
    flag.ownPass = true;
    QList<ParamSpec> params = {zeroScale(), fullScale(), zeroAdjust(), fullAdjust(),
                               zeroBase,    fullBase,    flag};
    if (row.mixed) {
        params.last().keyFilter = KeyFilter(nullptr);
        ParamSpec leadwire{"txtLineR",
                           "Leadwire",
                           "Resistance",
                           "03",
                           [](int ch) { return ch + 39; },
                           Cell::Param,
                           [](int ch) { return ch + 48; },
                           FieldKind::Real,
                           std::nullopt,
                           QString()};
        leadwire.channels = kMixedChannels;
        leadwire.acceptance = Acceptance::Always; // sent as it stands, even empty
        leadwire.keyFilter = KeyPosReal;
        params.append(leadwire);
    }
    return params;
}

ViewSpec temperatureViewSpec(const TemperatureSpec &row) {
    ViewSpec plan;
    plan.formName = row.formName;
    plan.tag = row.tag;
    plan.channels = row.channels;
    plan.params = temperatureParams(row);
    // Where the keys are filtered the fields also select their text on focus.
    for (ParamSpec &param : plan.params)
        param.selectOnFocus = row.keyFilters;
    plan.acceptance = row.acceptance;
    plan.keyFilters = row.keyFilters;
    plan.pauseMs = 50;
    plan.stopOnLinkLoss = row.stopOnLinkLoss;
    plan.extraColumns = {{"txtInputType", "InputType", "", 8, true, true}};
    if (row.mixed) {
        plan.valueGroupCaption = "Value/Type";
        plan.extraColumns = {{"txtInputType", "Type", "Value/Type", 8, true, false}};
    }
    // Maximum 12: group 01, the bases, then the flags.
    if (row.channels == 4) {
        plan.progress = {[](int ch) { return ch; }, [](int ch) { return ch + 4; },
                         [](int ch) { return ch + 8; }};
    } else {
        const bool fourBases = row.baseChannels == 4;
        plan.progress = {[](int ch) { return ch / 2; },
                         [fourBases](int ch) { return fourBases ? ch + 4 : ch / 2 + 4; },
                         [](int ch) { return ch / 2 + 8; }};
    }
    return plan;
}

} // namespace

const QList<TemperatureSpec> &TemperatureSpecs() {
    // Form, tag, channels, channels with bases, first base cell, acceptance, key filters, limit
    // option, zero offset, mixed inputs, timer off when the line is lost, burnout and unit items.
    static const QList<TemperatureSpec> rows = {
        {"frmQP4", "QP4", 4, 4, 17, Acceptance::Syntax, true, true, false, false, false, 20, 19},
        {"frmQP8", "QP8", 8, 8, 33, Acceptance::NotEmpty, false, true, true, false, true, 20, 19},
        {"frmQFR8", "QFR", 8, 4, 33, Acceptance::NotEmpty, true, false, false, true, false, 59, 60},
    };
    return rows;
}

TemperatureView::TemperatureView(TemperatureSpec row, QWidget *parent)
    : CardView(temperatureViewSpec(row), parent), m_row(std::move(row)) {}

void TemperatureView::buildBody(QVBoxLayout *layout) {
    auto *line = new QHBoxLayout;
    line->setSpacing(8);
    txtBurnout = ViewBuilders::valueField(this, "txtBurnout", 8);
    txtUnit = ViewBuilders::valueField(this, "txtUnit", 8);
    line->addWidget(ViewBuilders::caption(this, "Burnout"));
    line->addWidget(txtBurnout);
    line->addSpacing(16);
    line->addWidget(ViewBuilders::caption(this, "Unit"));
    line->addWidget(txtUnit);
    if (m_row.limitOption) {
        line->addSpacing(16);
        auto *limit = new QVBoxLayout;
        limit->setSpacing(0);
        m_limitCaption = ViewBuilders::caption(this, "Limit", true);
        limit->addWidget(m_limitCaption);
        chkLimit = new QCheckBox(this);
        chkLimit->setObjectName("chkLimit");
        limit->addWidget(chkLimit, 0, Qt::AlignHCenter);
        line->addLayout(limit);
    }
    line->addStretch();
    if (m_row.zeroOffset) {
        zeroDeg = MakeButton(this, "zeroDeg", "0 deg.C Offset");
        connect(zeroDeg, &QPushButton::clicked, this, &TemperatureView::zeroDeg_Click);
        line->addWidget(zeroDeg);
    }
    layout->addLayout(line);
    layout->addSpacing(6);
    CardView::buildBody(layout);
    // What the card reports is a word rather than a number.
    for (int ch = 1; ch <= m_spec.channels; ++ch)
        inputType(ch)->setAlignment(Qt::AlignCenter);
    txtBurnout->setAlignment(Qt::AlignCenter);
    txtUnit->setAlignment(Qt::AlignCenter);
}

QLineEdit *TemperatureView::inputType(int ch) const {
    return findChild<QLineEdit *>(ViewBuilders::columnName(m_spec.extraColumns.first(), ch));
}

void TemperatureView::OpenView(const QString &model) {
    build();
    ++m_busy;
    fraSetModel->setTitle(model);
    txtCardType->setText(model);
    txtCardNo->setText(QString::number(CardNo));
    if (zeroDeg) {
        const bool offered = model.startsWith(QLatin1String("QP8A"));
        zeroDeg->setVisible(offered);
        zeroDeg->setEnabled(offered);
    }
    WaitForTimer->stop();
    SelFormName = m_spec.tag;
    ShowView(this);
    AddressCard();
    txtVerNo->setText(ReadValue("00", 40));
    if (m_row.mixed) {
        ReadInputKinds();
    } else {
        for (int ch = 1; ch <= m_spec.channels; ++ch)
            inputType(ch)->setText(ReadValue("00", 24 + ch));
    }
    txtBurnout->setText(ReadValue("00", m_row.burnoutItem));
    txtUnit->setText(ReadValue("00", m_row.unitItem));
    --m_busy;
    SetScaleMinMax(model);
}

// The mixed card tells for each of its first channels whether a resistance sensor is fitted;
// only such a channel uses its bases and leadwire, the others are shown locked.
void TemperatureView::ReadInputKinds() {
    const QPalette palette = QApplication::palette();
    for (int ch = 1; ch <= kMixedChannels; ++ch) {
        const bool resistance = ReadValue("00", 54 + ch).startsWith(QLatin1String("QR"));
        inputType(ch)->setText(resistance ? kResistanceInput : kVoltageInput);
        for (const char *control : {"txtZBase", "txtFBase", "txtLineR"}) {
            QLineEdit *box = field(control, ch);
            box->setReadOnly(!resistance);
            SetBackColor(box, palette.color(resistance ? QPalette::Base : QPalette::Button));
        }
    }
    for (int ch = kMixedChannels + 1; ch <= m_spec.channels; ++ch)
        inputType(ch)->setText(kVoltageInput);
}

bool TemperatureView::LimitSupported() const {
    const QString type = txtCardType->text();
    if (m_row.zeroOffset && type.startsWith(QLatin1String("QP8A"))) return true;
    return LeadingNumber(DeleteDot(txtVerNo->text())) >= 10 && type.startsWith(QLatin1String("QP"));
}

void TemperatureView::ViewRefresh() {
    CardView::ViewRefresh();
    if (!chkLimit) return;
    const bool supported = LimitSupported();
    chkLimit->setChecked(supported && record().Param(64) == QLatin1String("1"));
    chkLimit->setVisible(supported);
    m_limitCaption->setVisible(supported);
}

void TemperatureView::UploadTail() {
    if (!chkLimit) return;
    if (!LimitSupported()) {
        record().Param(64).clear();
        return;
    }
    const bool enabled = ReadValue("00", 56) == QLatin1String("ENA");
    chkLimit->setChecked(enabled);
    record().Param(64) = enabled ? QStringLiteral("1") : QStringLiteral("0");
}

void TemperatureView::DownloadTail() {
    if (!chkLimit || !LimitSupported()) return;
    const QString data = chkLimit->isChecked() ? QStringLiteral("1") : QStringLiteral("0");
    WriteValue("00", 56, data);
    record().Param(64) = data;
}

// The limit's check box keeps its state in a cell of its own.
QString TemperatureView::CellName(Cell kind, int index) const {
    if (kind == Cell::Param && index == 64) return QStringLiteral("Limit");
    return CardView::CellName(kind, index);
}

void TemperatureView::ViewTick() {
    // A zero offset click that came while the line was busy opens the dialog now, between two
    // rounds, so its exchanges never run inside another's.
    if (m_zeroPending && isVisible() && !CardSelFocus) {
        m_zeroPending = false;
        OpenZeroOffset();
        return;
    }
    ++m_busy;
    CardView::ViewTick();
    --m_busy;
}

void TemperatureView::zeroDeg_Click() {
    if (m_busy > 0) {
        m_zeroPending = true;
        WaitForTimer->setInterval(Clock::ms(10));
        return;
    }
    OpenZeroOffset();
}

void TemperatureView::OpenZeroOffset() {
    WaitForTimer->stop(); // no polling while the offsets are measured
    auto *dialog = qobject_cast<FrmQP8Azero *>(ViewByName("frmQP8Azero"));
    if (!dialog) return;
    if (!dialog->parentWidget()) dialog->setParent(window(), dialog->windowFlags());
    dialog->Upload_First_File();
    dialog->exec();
}

FrmQP8Azero::FrmQP8Azero(QWidget *parent) : QDialog(parent) {
    setObjectName("frmQP8Azero");
    setWindowTitle("0 deg.C Offset");
    setModal(true);
    auto *layout = new QVBoxLayout(this);
    lblTitle = MakeLabel(this, "lblTitle", "0 degree Celsius Offset");
    QFont big = lblTitle->font();
    big.setBold(true);
    big.setPointSizeF(big.pointSizeF() * 1.3);
    lblTitle->setFont(big);
    layout->addWidget(lblTitle);

    offset = MakeFrame(this, "offset", "Press Ch. button to measure and store offset.");
    auto *grid = new QGridLayout(offset);
    grid->setHorizontalSpacing(10);
    for (int index = 0; index < 8; ++index) {
        ch.at(index) = MakeButton(offset, ViewBuilders::arrayName("ch", index),
                                  QStringLiteral("Ch.%1").arg(index + 1));
        ch_Text.at(index) =
            ViewBuilders::valueField(offset, ViewBuilders::arrayName("ch_Text", index), 8);
        // Two columns of four channels.
        const int row = index % 4;
        const int column = index / 4 * 3;
        grid->addWidget(ch.at(index), row, column);
        grid->addWidget(ch_Text.at(index), row, column + 1);
        connect(ch.at(index), &QPushButton::clicked, this, [this, index] { ch_Click(index); });
    }
    grid->setColumnMinimumWidth(2, 16);
    layout->addWidget(offset);

    auto *buttons = new QHBoxLayout;
    Clear = MakeButton(this, "Clear", "Clear");
    cmdExit = MakeButton(this, "cmdExit", "Exit");
    buttons->addWidget(Clear);
    buttons->addStretch();
    buttons->addWidget(cmdExit);
    layout->addLayout(buttons);
    connect(Clear, &QPushButton::clicked, this, &FrmQP8Azero::Clear_Click);
    connect(cmdExit, &QPushButton::clicked, this, &FrmQP8Azero::cmdExit_Click);
}

void FrmQP8Azero::AddressCard() {
    WriteData(3, "00", "01", "F");
    WriteData(3, "00", "41", QString::number(CardNo));
}

// One exchange at a time: the commands rest while the line is busy.
void FrmQP8Azero::SetCommandsEnabled(bool on) {
    m_busy = !on;
    for (QPushButton *button : ch)
        button->setEnabled(on);
    Clear->setEnabled(on);
    cmdExit->setEnabled(on);
}

void FrmQP8Azero::Upload_First_File() {
    AddressCard();
    WriteData(3, "03", "01", "F");
    for (int index = 0; index < 8; ++index)
        ch_Text.at(index)->setText(ValueAfterColon(ReadData(3, "03", QString::number(50 + index))));
}

// The card measures the channel and answers with the offset it stored.
void FrmQP8Azero::ch_Click(int index) {
    SetCommandsEnabled(false);
    const QString reply = WriteData(3, "03", QString::number(50 + index), "1");
    ch_Text.at(index)->setText(ValueAfterColon(reply));
    Clock::pause(10);
    SetCommandsEnabled(true);
}

void FrmQP8Azero::Clear_Click() {
    SetCommandsEnabled(false);
    AddressCard();
    WriteData(3, "03", "01", "F");
    for (int index = 0; index < 8; ++index)
        ch_Text.at(index)->setText(
            ValueAfterColon(WriteData(3, "03", QString::number(50 + index), "0.00")));
    SetCommandsEnabled(true);
}

void FrmQP8Azero::cmdExit_Click() {
    accept();
}

// However the dialog closes, the view's polling goes on; never in the middle of an exchange.
void FrmQP8Azero::done(int result) {
    if (m_busy) return;
    if (auto *view = qobject_cast<CardView *>(LoadedView("frmQP8"))) view->WaitForTimer->start();
    QDialog::done(result);
}

CardView *MakeTemperatureView(const QString &formName) {
    for (const TemperatureSpec &row : TemperatureSpecs())
        if (row.formName == formName) return new TemperatureView(row);
    return nullptr;
}
