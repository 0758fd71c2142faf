#include "rack/swcheck.h"

#include "link/exchange.h"
#include "rack/textroutines.h"
#include "ui/widgets.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShowEvent>
#include <QTimer>
#include <QVBoxLayout>

namespace {

// Where digit group k (0..5) of a slot's cells takes its hexadecimal digit in the switch text
// "hh,hh,hh" (1-based): each switch's low digit first, so its eight cells run from bit 0 to 7.
constexpr std::array<int, 6> kDigitPosition{2, 1, 5, 4, 8, 7};

int hexDigit(QChar c) {
    if (c >= QLatin1Char('0') && c <= QLatin1Char('9')) return c.unicode() - u'0';
    if (c >= QLatin1Char('A') && c <= QLatin1Char('F')) return c.unicode() - u'A' + 10;
    return -1;
}

QLineEdit *makeBox(QWidget *parent, const QString &name, int width) {
    auto *box = new QLineEdit(parent);
    box->setObjectName(name);
    box->setReadOnly(true);
    box->setFocusPolicy(Qt::NoFocus);
    box->setFixedWidth(width);
    return box;
}

// One switch bit: a small box whose background is the bit.
QLineEdit *makeCell(QWidget *parent, const QString &name, const QColor &colour) {
    auto *cell = new QLineEdit(parent);
    cell->setObjectName(name);
    cell->setReadOnly(true);
    cell->setFocusPolicy(Qt::NoFocus);
    cell->setFixedSize(14, 18);
    SetBackColor(cell, colour);
    return cell;
}

QLabel *makeHeader(QWidget *parent, const QString &text) {
    QLabel *label = MakeLabel(parent, QString(), text);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

} // namespace

FrmSWcheck::FrmSWcheck(QWidget *parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmSWcheck"));
    setWindowTitle(QStringLiteral("I/O Card DipSW Check"));
    buildForm();
    connect(m_cmdUp, &QPushButton::clicked, this, &FrmSWcheck::cmdUp_Click);
    connect(m_cmdExit, &QPushButton::clicked, this, &FrmSWcheck::cmdExit_Click);
}

void FrmSWcheck::buildForm() {
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(3);
    grid->addWidget(makeHeader(this, QStringLiteral("Card Name")), 0, 1);
    grid->addWidget(makeHeader(this, QStringLiteral("Version")), 0, 2);
    for (int sw = 0; sw < 3; ++sw)
        grid->addWidget(makeHeader(this, QStringLiteral("SW%1 (BIN)").arg(sw + 1)), 0, 4 + sw);

    for (int i = 0; i < kSlots; ++i) {
        const int row = i + 1;
        grid->addWidget(MakeLabel(this, QString(), QStringLiteral("Slot %1").arg(i + 1)), row, 0);
        m_name.at(i) = makeBox(this, QStringLiteral("txtName(%1)").arg(i), 110);
        m_version.at(i) = makeBox(this, QStringLiteral("txtVersion(%1)").arg(i), 70);
        m_sw.at(i) = makeBox(this, QStringLiteral("txtSW(%1)").arg(i), 80);
        grid->addWidget(m_name.at(i), row, 1);
        grid->addWidget(m_version.at(i), row, 2);
        grid->addWidget(m_sw.at(i), row, 3);
        for (int sw = 0; sw < 3; ++sw) {
            auto *strip = new QHBoxLayout;
            strip->setSpacing(1);
            for (int bit = 0; bit < 8; ++bit) {
                const int n = i * kCellsPerSlot + sw * 8 + bit;
                m_cells.at(n) = makeCell(this, QStringLiteral("txtCData(%1)").arg(n), kOffColour);
                strip->addWidget(m_cells.at(n));
            }
            grid->addLayout(strip, row, 4 + sw);
        }
    }

    auto *bottom = new QHBoxLayout;
    bottom->addWidget(MakeLabel(this, QString(), QStringLiteral("ON =")));
    bottom->addWidget(makeCell(this, QStringLiteral("txtCDataON"), kOnColour));
    bottom->addSpacing(12);
    bottom->addWidget(MakeLabel(this, QString(), QStringLiteral("OFF =")));
    bottom->addWidget(makeCell(this, QStringLiteral("txtCDataOFF"), kOffColour));
    bottom->addStretch();
    m_cmdUp = MakeButton(this, QStringLiteral("cmdUp"), QStringLiteral("Upload"));
    m_cmdExit = MakeButton(this, QStringLiteral("cmdExit"), QStringLiteral("Exit"));
    bottom->addWidget(m_cmdUp);
    bottom->addWidget(m_cmdExit);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addSpacing(8);
    layout->addLayout(bottom);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

void FrmSWcheck::txtCDataDraw(int i, const QString &text) {
    for (int k = 0; k < static_cast<int>(kDigitPosition.size()); ++k) {
        const int position = kDigitPosition.at(static_cast<size_t>(k));
        if (text.size() < position) continue;
        const int digit = hexDigit(text.at(position - 1));
        if (digit < 0) continue;
        for (int j = 0; j < 4; ++j)
            SetBackColor(cell(i * kCellsPerSlot + k * 4 + j),
                         (digit >> j) & 1 ? kOnColour : kOffColour);
    }
}

void FrmSWcheck::cmdUp_Click() {
    if (m_reading) return;
    m_reading = true;
    m_cmdUp->setEnabled(false);
    m_cmdExit->setEnabled(false);
    m_holdsCard.fill(false);

    WriteData(3, QStringLiteral("00"), QStringLiteral("01"), QStringLiteral("F"));
    WriteData(3, QStringLiteral("00"), QStringLiteral("41"), QStringLiteral("0"));
    WriteData(3, QStringLiteral("00"), QStringLiteral("01"), QStringLiteral("F"));
    // The comm card lists the slots at items 10 to 25.
    for (int i = 0; i < kSlots; ++i) {
        const QString name =
            ValueAfterColon(ReadData(3, QStringLiteral("00"), QString::number(i + 10)));
        if (name == QLatin1String("UNKNOWN")) {
            m_name.at(i)->setText(QStringLiteral("-"));
            m_version.at(i)->setText(QStringLiteral("-"));
            m_sw.at(i)->setText(QStringLiteral("-"));
            txtCDataDraw(i, QStringLiteral("00,00,00"));
        } else {
            // An empty reply is no "UNKNOWN": the slot is read like one with a card.
            m_holdsCard.at(i) = true;
            m_name.at(i)->setText(name);
        }
    }
    for (int i = 0; i < kSlots; ++i) {
        if (!m_holdsCard.at(i)) continue;
        WriteData(3, QStringLiteral("00"), QStringLiteral("41"), QString::number(i + 1));
        WriteData(3, QStringLiteral("00"), QStringLiteral("01"), QStringLiteral("F"));
        m_version.at(i)->setText(
            ValueAfterColon(ReadData(3, QStringLiteral("00"), QStringLiteral("40"))));
        const QString sw = ValueAfterColon(ReadData(3, QStringLiteral("00"), QStringLiteral("39")));
        m_sw.at(i)->setText(sw);
        txtCDataDraw(i, sw);
    }

    m_cmdUp->setEnabled(true);
    m_cmdExit->setEnabled(true);
    m_reading = false;
    emit readingDone();
}

void FrmSWcheck::cmdExit_Click() {
    accept();
}

void FrmSWcheck::reject() {
    if (m_reading) return;
    QDialog::reject();
}

void FrmSWcheck::showEvent(QShowEvent *event) {
    QDialog::showEvent(event);
    // Read once the dialog is on the screen, so the user sees the fields fill.
    if (!event->spontaneous()) QTimer::singleShot(0, this, &FrmSWcheck::cmdUp_Click);
}

FrmSWcheck *SWcheckDialog() {
    static FrmSWcheck *dialog = new FrmSWcheck;
    return dialog;
}

void ShowSWcheck() {
    SWcheckDialog()->exec();
}
