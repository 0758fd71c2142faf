#include "comm/frmcomm.h"

#include "link/exchange.h"
#include "rack/cardtable.h"
#include "rack/textroutines.h"
#include "ui/viewbuilders.h"
#include "ui/widgets.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShowEvent>
#include <QTimer>

using Comm::ReadRequired;
using Comm::ReadValue;

namespace {

const QString kZero = QStringLiteral("00");

bool beginsWithAny(const QString &text, std::initializer_list<const char *> prefixes) {
    for (const char *prefix : prefixes)
        if (text.startsWith(QLatin1String(prefix))) return true;
    return false;
}

// What a number field reads as a number: the leading number of the text, as "12.5 s" is 12.5;
// a text without one counts 0.
double leadingNumber(const QString &text) {
    const QString trimmed = text.trimmed();
    qsizetype end = 0;
    if (end < trimmed.size() && (trimmed[end] == u'-' || trimmed[end] == u'+')) ++end;
    bool dot = false;
    while (end < trimmed.size() && (trimmed[end].isDigit() || (!dot && trimmed[end] == u'.'))) {
        dot = dot || trimmed[end] == u'.';
        ++end;
    }
    bool ok = false;
    const double value = trimmed.left(end).toDouble(&ok);
    return ok ? value : 0.0;
}

} // namespace

FrmComm::FrmComm(QWidget *parent)
    : CommDialog(QStringLiteral("frmComm"), QStringLiteral("Com.Card Settings"), parent) {
    buildForm();
    connect(cmdUp, &QPushButton::clicked, this, &FrmComm::cmdUp_Click);
    connect(cmdDown, &QPushButton::clicked, this, &FrmComm::cmdDown_Click);
}

void FrmComm::buildForm() {
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(8);
    txtName = addField(grid, 0, QStringLiteral("Card Name"), QStringLiteral("txtName"), 12, true);
    txtVersion =
        addField(grid, 1, QStringLiteral("Version"), QStringLiteral("txtVersion"), 8, true);
    txtVersion2 =
        addField(grid, 1, QStringLiteral("Version2"), QStringLiteral("txtVersion2"), 8, true, 2);
    lblVersion2 = qobject_cast<QLabel *>(grid->itemAtPosition(1, 2)->widget());
    lblVersion2->setObjectName(QStringLiteral("lblVersion2"));
    txtSW = addField(grid, 2, QStringLiteral("SW1 SW2 SW3"), QStringLiteral("txtSW"), 12, true);

    lblStatus = MakeLabel(this, QStringLiteral("lblStatus"), QStringLiteral("Status"));
    grid->addWidget(lblStatus, 3, 0);
    auto *statusRow = new QHBoxLayout;
    for (int i = 0; i < 2; ++i) {
        txtStatus.at(size_t(i)) = ViewBuilders::valueField(
            this, ViewBuilders::arrayName(QStringLiteral("txtStatus"), i), 8);
        txtStatus.at(size_t(i))->setAlignment(Qt::AlignLeft);
        statusRow->addWidget(txtStatus.at(size_t(i)));
    }
    statusRow->addStretch(1);
    grid->addLayout(statusRow, 3, 1, 1, 3);

    txtTimeout =
        addField(grid, 4, QStringLiteral("Time (0.1sec)"), QStringLiteral("txtTimeout"), 6);
    lblTimeout = qobject_cast<QLabel *>(grid->itemAtPosition(4, 0)->widget());
    lblTimeout->setObjectName(QStringLiteral("lblTimeout"));
    InstallSelectAllOnFocus(txtTimeout);

    lblDelay =
        MakeLabel(this, QStringLiteral("lblDelay"), QStringLiteral("Fieldbus Activate Delay SW"));
    ChkCJC = new QCheckBox(this);
    ChkCJC->setObjectName(QStringLiteral("ChkCJC"));
    lblDelaySec = MakeLabel(this, QStringLiteral("lblDelaySec"), QStringLiteral("0 sec"));
    auto *delayRow = new QHBoxLayout;
    delayRow->addWidget(ChkCJC);
    delayRow->addWidget(lblDelaySec);
    delayRow->addStretch(1);
    grid->addWidget(lblDelay, 5, 0, 1, 2);
    grid->addLayout(delayRow, 5, 2, 1, 2);
    grid->setColumnStretch(3, 1);
    body()->addLayout(grid);

    fraOutput = MakeFrame(this, QStringLiteral("fraOutput"), QStringLiteral("Direct Output"));
    auto *outputs = new QGridLayout(fraOutput);
    outputs->setHorizontalSpacing(4);
    outputs->setVerticalSpacing(2);
    for (int slot = 1; slot <= kSlots; ++slot) {
        const int row = (slot - 1) / 8 * 2;
        const int column = (slot - 1) % 8;
        outputs->addWidget(ViewBuilders::caption(fraOutput, QString::number(slot), true), row,
                           column);
        QLineEdit *box = ViewBuilders::field(
            fraOutput, ViewBuilders::arrayName(QStringLiteral("txtOutSlot"), slot), 3);
        box->setAlignment(Qt::AlignCenter);
        InstallSelectAllOnFocus(box);
        txtOutSlot.at(size_t(slot)) = box;
        outputs->addWidget(box, row + 1, column);
    }
    lblDIOData = MakeLabel(fraOutput, QStringLiteral("lblDIOData"), QStringLiteral("DIO Data"));
    txtZD1 = ViewBuilders::field(fraOutput, QStringLiteral("txtZD1"), 6);
    outputs->addWidget(lblDIOData, 4, 0, 1, 2);
    outputs->addWidget(txtZD1, 4, 2, 1, 2);
    lblDIOData->hide();
    txtZD1->hide();
    body()->addWidget(fraOutput);

    addTransferCommands();
}

// --- What a card has ---------------------------------------------------------------------------

QString FrmComm::ShortName(const QString &name) {
    if (name == QLatin1String("ZOKAR")) return name;
    if (name.startsWith(QLatin1String("QV3"))) return name.mid(4);
    return name.mid(3);
}

double FrmComm::VersionNumber(const QString &version) {
    return leadingNumber(DeleteDot(version.mid(1)));
}

bool FrmComm::HasTimeout(const QString &name) {
    if (name == QLatin1String("ZOKAR")) return true;
    return !beginsWithAny(name, {"HK", "HL", "HZMN", "ZD3", "HLINK", "ZTKL"});
}

bool FrmComm::HasDirectOutput(const QString &name, const QString &version,
                              const QString &nameReply) {
    if (name == QLatin1String("ZOKAR")) return true;
    return VersionNumber(version) >= 101 &&
           !beginsWithAny(name, {"ZD", "ZHM", "ZH", "ZB", "H", "ZN", "ZY", "ZRT"}) &&
           !ValueBeforeColon(nameReply).startsWith(QLatin1String("QV3"));
}

bool FrmComm::HasActivateDelay(const QString &name, const QString &version) {
    if (name == QLatin1String("ZOKAR")) return true;
    const double number = VersionNumber(version);
    return (number >= 205 && name.startsWith(QLatin1String("ZG1"))) ||
           (number >= 201 && name.startsWith(QLatin1String("ZG4"))) ||
           (number >= 204 && name.startsWith(QLatin1String("ZT1"))) ||
           name.startsWith(QLatin1String("ZTM1"));
}

bool FrmComm::HasTimeout() const {
    return HasTimeout(txtName->text());
}

bool FrmComm::HasDirectOutput() const {
    const QString reply = ReadData(3, kZero, QStringLiteral("04"));
    return HasDirectOutput(txtName->text(), txtVersion->text(), reply);
}

bool FrmComm::HasActivateDelay() const {
    return HasActivateDelay(txtName->text(), txtVersion->text());
}

QString FrmComm::timeGroup() const {
    const QString name = txtName->text();
    const bool ccLink = name == QLatin1String("ZKFD1") || name == QLatin1String("ZKFD1W");
    return ccLink ? QStringLiteral("50") : QStringLiteral("0");
}

QString FrmComm::outputGroup() const {
    return timeGroup() == QLatin1String("50") ? QStringLiteral("50") : QStringLiteral("17");
}

void FrmComm::showDelaySwitch(bool visible) {
    lblDelay->setVisible(visible);
    ChkCJC->setVisible(visible);
    lblDelaySec->setVisible(visible);
}

// --- Opening -----------------------------------------------------------------------------------

void FrmComm::showEvent(QShowEvent *event) {
    CommDialog::showEvent(event);
    // Read once the dialog is on the screen, so the user sees the fields fill.
    if (!event->spontaneous()) QTimer::singleShot(0, this, &FrmComm::Form_Activate);
}

void FrmComm::Form_Activate() {
    if (isBusy()) return;
    Run run(this);
    if (!openCard()) Comm::ShowIncomplete(Comm::Transfer::Upload);
}

bool FrmComm::openCard() {
    WriteData(3, kZero, QStringLiteral("01"), QStringLiteral("F"));
    WriteData(3, kZero, QStringLiteral("41"), QStringLiteral("0"));
    const QString reply = ReadData(3, kZero, QStringLiteral("04"));
    if (reply.isEmpty()) return false;
    if (reply != QLatin1String("CNG")) {
        txtName->setText(ShortName(ValueBeforeColon(reply)));
    } else {
        // A card that refuses its name item tells it in front of its version.
        const QString version = ReadData(3, kZero, QStringLiteral("40"));
        if (!version.startsWith(QLatin1String("VX-"))) return false;
        txtName->setText(ValueBeforeColon(version).mid(3));
    }
    const QString name = txtName->text();

    lblDIOData->hide();
    txtZD1->hide();
    lblTimeout->setVisible(HasTimeout());
    txtTimeout->setVisible(HasTimeout());

    QString value;
    if (!ReadRequired(kZero, QStringLiteral("03"), value)) return false;
    txtStatus[0]->setText(value);

    const bool gateway = name.startsWith(QLatin1String("HLINK"));
    for (QWidget *widget : {static_cast<QWidget *>(lblStatus), static_cast<QWidget *>(txtStatus[0]),
                            static_cast<QWidget *>(cmdUp), static_cast<QWidget *>(cmdDown)})
        widget->setVisible(!gateway);
    const bool secondStatus = !gateway && !name.startsWith(QLatin1String("ZD3"));
    txtStatus[1]->setVisible(secondStatus);
    if (secondStatus) {
        if (!ReadRequired(kZero, QStringLiteral("04"), value)) return false;
        txtStatus[1]->setText(value);
    }

    txtTimeout->setText(Comm::CommRecord().Param(1));
    txtTimeout->setEnabled(HasTimeout());

    if (!ReadRequired(kZero, QStringLiteral("40"), value)) return false;
    txtVersion->setText(QStringLiteral("V") + value);
    txtSW->setText(ReadValue(kZero, QStringLiteral("39")));

    const bool outputs = HasDirectOutput();
    fraOutput->setVisible(outputs);
    if (outputs)
        for (int slot = 1; slot <= kSlots; ++slot)
            txtOutSlot.at(size_t(slot))->setText(Comm::CommRecord().Param(slot + 1));

    m_delayPresent = HasActivateDelay();
    showDelaySwitch(m_delayPresent);
    if (m_delayPresent) ChkCJC->setChecked(Comm::CommRecord().Param(18) == QLatin1String("1"));

    if (name.startsWith(QLatin1String("ZQ1"))) {
        lblTimeout->hide();
        txtTimeout->hide();
    }

    const bool ccLink = name.startsWith(QLatin1String("ZKFD"));
    lblVersion2->setVisible(ccLink);
    txtVersion2->setVisible(ccLink);
    if (ccLink) {
        if (!ReadRequired(QStringLiteral("50"), QStringLiteral("40"), value)) return false;
        txtVersion2->setText(QStringLiteral("V") + value);
    }
    return true;
}

// --- Upload and Download -----------------------------------------------------------------------

void FrmComm::cmdUp_Click() {
    if (isBusy()) return;
    Run run(this);
    if (!uploadCard()) Comm::ShowIncomplete(Comm::Transfer::Upload);
}

bool FrmComm::uploadCard() {
    WriteData(3, kZero, QStringLiteral("01"), QStringLiteral("F"));
    WriteData(3, kZero, QStringLiteral("41"), QStringLiteral("0"));
    QString value;
    if (!ReadRequired(kZero, QStringLiteral("40"), value)) return false;
    txtVersion->setText(QStringLiteral("V") + value);
    txtSW->setText(ReadValue(kZero, QStringLiteral("39")));

    // A "ZD3" card gives neither its name nor a second status here; "ZOKAR" is no "ZD3".
    const bool hasNameItem = !txtName->text().startsWith(QLatin1String("ZD3"));
    if (hasNameItem) {
        const QString reply = ReadData(3, kZero, QStringLiteral("04"));
        if (reply.isEmpty()) return false;
        txtName->setText(ShortName(ValueBeforeColon(reply)));
    }
    Comm::CommRecord().CardName = txtName->text();
    Comm::CommRecord().VerNo = txtVersion->text();

    if (!ReadRequired(kZero, QStringLiteral("03"), value)) return false;
    txtStatus[0]->setText(value);
    if (!txtName->text().startsWith(QLatin1String("ZD3"))) {
        if (!ReadRequired(kZero, QStringLiteral("04"), value)) return false;
        txtStatus[1]->setText(value);
    }

    const QString g = timeGroup();
    WriteData(3, g, QStringLiteral("01"), QStringLiteral("F"));
    if (HasTimeout()) {
        if (!ReadRequired(g, QStringLiteral("09"), value)) return false;
        txtTimeout->setText(value);
    } else {
        txtTimeout->clear();
    }
    Comm::CommRecord().Param(1) = txtTimeout->text();
    txtTimeout->setEnabled(HasTimeout());

    if (HasDirectOutput()) {
        const QString h = outputGroup();
        WriteData(3, h, QStringLiteral("01"), QStringLiteral("1"));
        for (int slot = 1; slot <= kSlots; ++slot) {
            if (!ReadRequired(h, QString::number(9 + slot), value)) return false;
            txtOutSlot.at(size_t(slot))->setText(value);
            Comm::CommRecord().Param(slot + 1) = value;
        }
    }

    const bool delay = HasActivateDelay();
    showDelaySwitch(delay);
    if (delay) {
        if (!ReadRequired(kZero, QStringLiteral("30"), value)) return false;
        ChkCJC->setChecked(value != QLatin1String("0"));
        Comm::CommRecord().Param(18) =
            ChkCJC->isChecked() ? QStringLiteral("1") : QStringLiteral("0");
    }
    return true;
}

void FrmComm::cmdDown_Click() {
    if (isBusy()) return;
    Run run(this);
    WriteData(3, kZero, QStringLiteral("01"), QStringLiteral("F"));
    WriteData(3, kZero, QStringLiteral("41"), QStringLiteral("00"));
    if (WriteData(3, kZero, QStringLiteral("01"), QStringLiteral("1")).isEmpty()) {
        Comm::ShowIncomplete(Comm::Transfer::Download);
        return;
    }
    // From here on the card is addressed; what the writes answer is not examined.
    const QString g = timeGroup();
    WriteData(3, g, QStringLiteral("01"), QStringLiteral("F"));
    const bool keepTime =
        txtName->text().startsWith(QLatin1String("ZB")) && txtTimeout->text().isEmpty();
    if (!keepTime) {
        if (HasTimeout()) {
            if (!Comm::NumberInRange(txtTimeout->text(), 2, 32000))
                txtTimeout->setText(QStringLiteral("30"));
            WriteData(3, g, QStringLiteral("09"), txtTimeout->text());
            Comm::CommRecord().Param(1) = txtTimeout->text();
        } else {
            Comm::CommRecord().Param(1).clear();
        }
    }

    if (HasDirectOutput()) {
        const QString h = outputGroup();
        WriteData(3, h, QStringLiteral("01"), QStringLiteral("1"));
        for (int slot = 1; slot <= kSlots; ++slot) {
            QLineEdit *box = txtOutSlot.at(size_t(slot));
            if (!Comm::NumberInRange(box->text(), 0, 16)) box->setText(QStringLiteral("0"));
            WriteData(3, h, QString::number(9 + slot), box->text());
            Comm::CommRecord().Param(slot + 1) = box->text();
        }
    }

    if (m_delayPresent) {
        const QString on = ChkCJC->isChecked() ? QStringLiteral("1") : QStringLiteral("0");
        WriteData(3, kZero, QStringLiteral("30"), on);
        Comm::CommRecord().Param(18) = on;
    }
}
