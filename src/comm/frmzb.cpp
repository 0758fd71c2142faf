#include "comm/frmzb.h"

#include "link/exchange.h"
#include "rack/cardtable.h"
#include "rack/textroutines.h"
#include "ui/people.h"
#include "ui/viewbuilders.h"
#include "ui/widgets.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>

using ViewBuilders::arrayName;

namespace {

const QString kZero = QStringLiteral("00");
// The card's own group.
const QString kGroup = QStringLiteral("17");

QString item(int n) {
    return QString::number(n);
}

} // namespace

const QStringList &FrmZB::ScaleEntries() {
    static const QStringList entries = {"1", "10", "100", "1000", "0.1", "0.01", "0.001", "0.0001"};
    return entries;
}

FrmZB::FrmZB(QWidget *parent)
    : CommDialog(QStringLiteral("frmZB"), QStringLiteral("ZBx Settings"), parent) {
    buildForm();
    connect(cmdReadCard, &QPushButton::clicked, this, &FrmZB::cmdReadCard_Click);
    connect(cmdUp, &QPushButton::clicked, this, &FrmZB::cmdUp_Click);
    connect(cmdDown, &QPushButton::clicked, this, &FrmZB::cmdDown_Click);
    selectFirstPage();
}

void FrmZB::buildForm() {
    buildNames();
    buildScaling();

    auto *delay = new QGridLayout;
    txtTimeout = addField(delay, 0, QStringLiteral("Power on delay (1sec)"),
                          QStringLiteral("txtTimeout"), 5);
    InstallSelectAllOnFocus(txtTimeout);
    delay->setColumnStretch(2, 1);
    body()->addLayout(delay);

    cmdReadCard = addCommand(QStringLiteral("cmdReadCard"), QStringLiteral("Read Card"));
    addTransferCommands();
}

// The names, four cards a row, with the option beside each row that shows its cards' scaling.
void FrmZB::buildNames() {
    QGroupBox *frame =
        MakeFrame(this, QStringLiteral("fraCardList"), QStringLiteral("I/O Card Name"));
    auto *grid = new QGridLayout(frame);
    grid->setHorizontalSpacing(6);
    grid->setVerticalSpacing(3);
    grid->addWidget(ViewBuilders::caption(frame, QStringLiteral("I/O card"), true), 0, 1, 1,
                    kColumns);
    grid->addWidget(ViewBuilders::caption(frame, QStringLiteral("Scaling"), true), 0, kColumns + 1);
    auto *options = new QButtonGroup(this);
    for (int row = 0; row < kCards / kColumns; ++row) {
        const int first = row * kColumns + 1;
        grid->addWidget(
            ViewBuilders::caption(frame, QStringLiteral("I/O %1 - %2").arg(first).arg(first + 3)),
            row + 1, 0);
        for (int j = 0; j < kColumns; ++j) {
            QLineEdit *name = ViewBuilders::field(frame, arrayName("txtCardList", first + j), 10);
            name->setAlignment(Qt::AlignLeft);
            InstallSelectAllOnFocus(name);
            txtCardList.at(size_t(first + j)) = name;
            grid->addWidget(name, row + 1, j + 1);
        }
        auto *option = new QRadioButton(frame);
        option->setObjectName(QStringLiteral("OptScl%1").arg(row + 1));
        options->addButton(option);
        OptScl.at(size_t(row + 1)) = option;
        grid->addWidget(option, row + 1, kColumns + 1, Qt::AlignCenter);
        connect(option, &QRadioButton::toggled, this, [this](bool on) {
            if (!on) return;
            showPage();
            showAddresses();
        });
    }
    body()->addWidget(frame);
}

// One column of the page per card: its heading, its two values and its sixteen factors.
void FrmZB::buildScaling() {
    QGroupBox *frame = MakeFrame(this, QStringLiteral("fraScaling"), QStringLiteral("Scaling"));
    auto *grid = new QGridLayout(frame);
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(2);
    for (int j = 0; j < kColumns; ++j) {
        const int column = j + 1;
        QLabel *heading = ViewBuilders::caption(frame, QStringLiteral("I/O %1").arg(j + 1), true);
        heading->setObjectName(arrayName("lblSclCard", j));
        lblSclCard.at(size_t(j)) = heading;
        grid->addWidget(heading, 0, column);

        QLineEdit *n2 = ViewBuilders::field(frame, arrayName("txtN2ADR", j), 8);
        QLineEdit *vnd = ViewBuilders::field(frame, arrayName("txtVNDAHU", j), 8);
        txtN2ADR.at(size_t(j)) = n2;
        txtVNDAHU.at(size_t(j)) = vnd;
        for (QLineEdit *box : {n2, vnd}) {
            box->setAlignment(Qt::AlignCenter);
            InstallSelectAllOnFocus(box);
        }
        grid->addWidget(n2, 1, column);
        grid->addWidget(vnd, 2, column);
        connect(n2, &QLineEdit::textChanged, this, [this, j](const QString &text) {
            if (!displayBusy) m_n2adr.at(size_t(page() * kColumns + j + 1)) = text;
        });
        connect(vnd, &QLineEdit::textChanged, this, [this, j](const QString &text) {
            if (!displayBusy) m_vndAhu.at(size_t(page() * kColumns + j + 1)) = text;
        });

        for (int ch = 0; ch < kChannels; ++ch) {
            const int index = j * kChannels + ch;
            auto *list = new QComboBox(frame);
            list->setObjectName(arrayName("cbScl", index));
            list->addItems(ScaleEntries());
            list->setMinimumWidth(90);
            cbScl.at(size_t(index)) = list;
            grid->addWidget(list, 3 + ch, column);
            connect(list, &QComboBox::currentIndexChanged, this,
                    [this, index] { scaleChosen(index); });
        }
    }
    grid->addWidget(ViewBuilders::caption(frame, QStringLiteral("N2ADR")), 1, 0);
    grid->addWidget(ViewBuilders::caption(frame, QStringLiteral("VND:0 /AHU:1")), 2, 0);
    for (int ch = 0; ch < kChannels; ch += 4)
        grid->addWidget(ViewBuilders::caption(frame, QStringLiteral("CH %1").arg(ch + 1)), 3 + ch,
                        0);
    body()->addWidget(frame);
}

void FrmZB::SetControlsEnabled(bool on) {
    for (QWidget *control : {static_cast<QWidget *>(cmdUp), static_cast<QWidget *>(cmdDown),
                             static_cast<QWidget *>(cmdExit), static_cast<QWidget *>(cmdReadCard),
                             static_cast<QWidget *>(txtTimeout)})
        control->setEnabled(on);
    for (int i = 1; i <= kCards; ++i)
        txtCardList.at(size_t(i))->setEnabled(on);
    for (QComboBox *list : cbScl)
        list->setEnabled(on);
    for (int j = 0; j < kColumns; ++j) {
        txtN2ADR.at(size_t(j))->setEnabled(on);
        txtVNDAHU.at(size_t(j))->setEnabled(on);
    }
}

void FrmZB::setCommandsEnabled(bool on) {
    SetControlsEnabled(on);
}

// --- The page ----------------------------------------------------------------------------------

int FrmZB::page() const {
    for (int p = 2; p <= kCards / kColumns; ++p)
        if (OptScl.at(size_t(p))->isChecked()) return p - 1;
    return 0;
}

void FrmZB::selectFirstPage() {
    {
        const QSignalBlocker quiet(OptScl[1]);
        OptScl[1]->setChecked(true);
    }
    showPage();
    showAddresses();
}

void FrmZB::showPage() {
    displayBusy = true;
    for (int j = 0; j < kColumns; ++j) {
        const int card = page() * kColumns + j + 1;
        lblSclCard.at(size_t(j))->setText(QStringLiteral("I/O %1").arg(card));
        const QStringList fields = m_scaling.at(size_t(card)).split(QLatin1Char(','));
        const bool whole = fields.size() == kChannels;
        for (int ch = 0; ch < kChannels; ++ch) {
            // A position the lists do not have shows as no selection.
            bool ok = false;
            const int position = whole ? fields.at(ch).toInt(&ok) : -1;
            const bool known = ok && position >= 0 && position < ScaleEntries().size();
            cbScl.at(size_t(j * kChannels + ch))->setCurrentIndex(known ? position : -1);
        }
    }
    displayBusy = false;
}

void FrmZB::showAddresses() {
    displayBusy = true;
    for (int j = 0; j < kColumns; ++j) {
        const int card = page() * kColumns + j + 1;
        txtN2ADR.at(size_t(j))->setText(m_n2adr.at(size_t(card)));
        txtVNDAHU.at(size_t(j))->setText(m_vndAhu.at(size_t(card)));
    }
    displayBusy = false;
}

// A column's text changes only once all sixteen of its lists have a factor.
void FrmZB::scaleChosen(int index) {
    if (displayBusy) return;
    const int column = index / kChannels;
    QStringList positions;
    for (int ch = 0; ch < kChannels; ++ch) {
        const int position = cbScl.at(size_t(column * kChannels + ch))->currentIndex();
        if (position < 0) return;
        positions << QString::number(position);
    }
    m_scaling.at(size_t(page() * kColumns + column + 1)) = positions.join(QLatin1Char(','));
}

// --- Opening, Upload, Download -----------------------------------------------------------------

void FrmZB::OpenView(const QString &) {
    Upload_First_File();
}

void FrmZB::Upload_First_File() {
    if (isBusy()) return;
    Run run(this);
    WriteData(3, kGroup, QStringLiteral("0"), QStringLiteral("1"));
    ReadData(3, kZero, QStringLiteral("55"));
    const CardRecord &record = Comm::CommRecord();
    txtTimeout->setText(record.Param(2));
    for (int i = 1; i <= kCards; ++i) {
        txtCardList.at(size_t(i))->setText(record.ChParam(i));
        m_scaling.at(size_t(i)) = record.Param(16 + i);
        m_n2adr.at(size_t(i)) = record.Param(32 + i);
        m_vndAhu.at(size_t(i)) = record.Param(48 + i);
    }
    selectFirstPage();
}

void FrmZB::cmdUp_Click() {
    if (isBusy()) return;
    Run run(this);
    if (!uploadCard()) Comm::ShowIncomplete(Comm::Transfer::Upload);
}

void FrmZB::cmdReadCard_Click() {
    if (isBusy()) return;
    Run run(this);
    // The card reads its I/O cards anew; the Upload then brings what it found.
    WriteData(3, kZero, QStringLiteral("01"), QStringLiteral("F"));
    WriteData(3, kZero, QStringLiteral("41"), QStringLiteral("00"));
    WriteData(3, kGroup, QStringLiteral("1"), QStringLiteral("1"));
    WriteData(3, kGroup, QStringLiteral("42"), QStringLiteral("1"));
    if (!uploadCard()) Comm::ShowIncomplete(Comm::Transfer::Upload);
}

bool FrmZB::uploadCard() {
    Comm::SelectCommCard(kZero, QStringLiteral("1"));
    CardRecord &record = Comm::CommRecord();
    QString value;
    if (!Comm::ReadRequired(kZero, QStringLiteral("40"), value)) return false;
    record.VerNo = QStringLiteral("V") + value;
    const QString name = ReadData(3, kZero, QStringLiteral("04"));
    if (name.isEmpty()) return false;
    record.CardName = ValueBeforeColon(name).mid(3);
    if (!Comm::ReadRequired(kZero, QStringLiteral("09"), value)) return false;
    record.Param(1) = value;

    // From here on a silent item gives an empty value.
    WriteData(3, kGroup, QStringLiteral("0"), QStringLiteral("1"));
    txtTimeout->setText(Comm::ReadValue(kZero, QStringLiteral("55")));
    record.Param(2) = txtTimeout->text();
    WriteData(3, kGroup, QStringLiteral("1"), QStringLiteral("1"));
    for (int i = 1; i <= kCards; ++i) {
        txtCardList.at(size_t(i))->setText(Comm::ReadValue(kGroup, item(25 + i)));
        record.ChParam(i) = txtCardList.at(size_t(i))->text();
    }
    // The card answers the write that names a slot with that slot's factors, closed by ";".
    for (int i = 1; i <= kCards; ++i) {
        QString factors = ValueAfterColon(
            WriteData(3, kGroup, QStringLiteral("43"), QStringLiteral("%1;").arg(i - 1)));
        if (factors.endsWith(QLatin1Char(';'))) factors.chop(1);
        m_scaling.at(size_t(i)) = factors;
        record.Param(16 + i) = factors;
    }
    for (int i = 1; i <= kCards; ++i) {
        m_n2adr.at(size_t(i)) = Comm::ReadValue(kGroup, item(44 + i));
        record.Param(32 + i) = m_n2adr.at(size_t(i));
        m_vndAhu.at(size_t(i)) = Comm::ReadValue(kGroup, item(60 + i));
        record.Param(48 + i) = m_vndAhu.at(size_t(i));
    }
    selectFirstPage();
    return true;
}

void FrmZB::cmdDown_Click() {
    if (isBusy()) return;
    Run run(this);
    if (!Comm::SelectCommCardAndTest(QStringLiteral("01"), QStringLiteral("1"))) {
        Comm::ShowIncomplete(Comm::Transfer::Download);
        return;
    }
    if (txtTimeout->text().isEmpty()) {
        People::message(QStringLiteral("Please enter Timeout Val."), QString(),
                        People::Icon::Information);
        return;
    }
    // What the writes answer is not examined.
    CardRecord &record = Comm::CommRecord();
    WriteData(3, kZero, QStringLiteral("1"), QStringLiteral("1"));
    WriteData(3, kZero, QStringLiteral("55"), txtTimeout->text());
    record.Param(2) = txtTimeout->text();
    WriteData(3, kGroup, QStringLiteral("1"), QStringLiteral("1"));
    for (int i = 1; i <= kCards; ++i) {
        WriteData(3, kGroup, item(25 + i), txtCardList.at(size_t(i))->text());
        record.ChParam(i) = txtCardList.at(size_t(i))->text();
    }
    for (int i = 1; i <= kCards; ++i) {
        WriteData(3, kGroup, QStringLiteral("44"),
                  QStringLiteral("%1:%2;").arg(i - 1).arg(m_scaling.at(size_t(i))));
        record.Param(16 + i) = m_scaling.at(size_t(i));
    }
    for (int i = 1; i <= kCards; ++i) {
        WriteData(3, kGroup, item(44 + i), m_n2adr.at(size_t(i)));
        record.Param(32 + i) = m_n2adr.at(size_t(i));
        WriteData(3, kGroup, item(60 + i), m_vndAhu.at(size_t(i)));
        record.Param(48 + i) = m_vndAhu.at(size_t(i));
    }
}
