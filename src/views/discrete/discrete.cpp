#include "views/discrete/discrete.h"

#include "link/clock.h"
#include "link/exchange.h"
#include "rack/overview.h"
#include "rack/textroutines.h"
#include "ui/viewbuilders.h"
#include "ui/widgets.h"

#include <QFont>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace {

// A channel's reply holds one bit, or a DI and a DO bit in the order the card gives them, or
// three parts DI,DO,DO status.
QStringList singleState(const QString &value) {
    return {value};
}
QStringList diFirstDoLast(const QString &value) {
    return {value.left(1), value.right(1)};
}
QStringList diLastDoFirst(const QString &value) {
    return {value.right(1), value.left(1)};
}
QStringList threeParts(const QString &value) {
    const QStringList parts = value.split(QLatin1Char(','));
    return parts.size() == 3 ? parts : QStringList();
}

DiscreteSpec plainRow(const char *form, const char *tag, int channels, const char *group,
                      int pauseMs) {
    return {form,      tag,         channels, group,         {"txtChData"},
            {"Value"}, singleState, {},       {"txtChData"}, pauseMs};
}

// A column of channels is sixteen high, so that 64 channels fit the work area in four columns.
constexpr int kChannelsPerColumn = 16;

} // namespace

const QList<DiscreteSpec> &DiscreteSpecs() {
    // Form, tag, channels, group, fields, captions, decoding, cleared before and after the
    // read, pause.
    // clang-format off
    static const QList<DiscreteSpec> specs = {
        plainRow("frmQT8", "QT8", 8, "00", 10),
        plainRow("frmQT16", "QT16", 16, "00", 10),
        plainRow("frmQT32", "QT32", 32, "01", 5),
        plainRow("frmQT64", "QT64", 64, "01", 5),
        {"frmXB16", "XB16", 16, "00", {"txtDICh", "txtDOCh"}, {"DI", "DO"}, diFirstDoLast,
         {"txtDICh", "txtDOCh"}, {}, 0},
        {"frmXC8", "XC8", 8, "00", {"txtDICh", "txtDOCh"}, {"DI", "DO"}, diLastDoFirst,
         {}, {"txtDICh"}, 10},
        {"frmQTC16", "QTC16", 8, "00", {"txtDICh", "txtDOCh", "txtDOStatusCh"},
         {"DI", "DO", "DO Status"}, threeParts, {"txtDICh", "txtDOCh", "txtDOStatusCh"}, {}, 0},
    };
    // clang-format on
    return specs;
}

const DiscreteSpec *FindDiscreteSpec(const QString &formName) {
    for (const DiscreteSpec &plan : DiscreteSpecs())
        if (plan.formName == formName) return &plan;
    return nullptr;
}

bool IsOnState(const QString &bit) {
    return bit == QLatin1String("1");
}

void ShowState(QLineEdit *box, const QString &bit) {
    const bool on = IsOnState(bit);
    SetForeColor(box, on ? kStateOnColour : kStateOffColour);
    box->setText(on ? QStringLiteral("ON") : QStringLiteral("OFF"));
}

QString ByteBitsLowFirst(const QString &byteText) {
    // HexToBits gives the byte's bits most significant first in its first eight places.
    const QString bits = HexToBits(byteText.left(2)).left(8);
    QString low;
    for (qsizetype i = bits.size() - 1; i >= 0; --i)
        low.append(bits.at(i));
    return low;
}

DiscreteView::DiscreteView(DiscreteSpec plan, QWidget *parent)
    : CardView(
          [&plan] {
              ViewSpec view;
              view.formName = plan.formName;
              view.tag = plan.tag;
              view.channels = plan.channels;
              view.pauseMs = plan.pauseMs;
              view.headerFrame = QStringLiteral("fraShowModel");
              view.hasUpDown = false;
              return view;
          }(),
          parent),
      m_discrete(std::move(plan)) {}

void DiscreteView::buildBody(QVBoxLayout *layout) {
    QList<ViewBuilders::GridColumn> columns;
    for (qsizetype f = 0; f < m_discrete.fields.size(); ++f)
        columns.append({m_discrete.fields.at(f), m_discrete.captions.value(f), "", 5, true, false});
    auto *row = new QHBoxLayout;
    row->setSpacing(24);
    for (int first = 1; first <= m_discrete.channels; first += kChannelsPerColumn) {
        auto *box = new QWidget(this);
        const int count = qMin(kChannelsPerColumn, m_discrete.channels - first + 1);
        box->setLayout(ViewBuilders::channelGrid(box, columns, count, first));
        row->addWidget(box, 0, Qt::AlignTop);
    }
    row->addStretch();
    layout->addLayout(row);
    layout->addStretch();
    for (const QString &control : m_discrete.fields) {
        for (int ch = 1; ch <= m_discrete.channels; ++ch) {
            QLineEdit *box = field(control, ch);
            box->setAlignment(Qt::AlignCenter);
            QFont bold = box->font();
            bold.setBold(true);
            box->setFont(bold);
        }
    }
}

// A watching view keeps the record's name and version as the card gave them.
void DiscreteView::SetScaleMinMax(const QString &) {
    CopyHeaderToRecord();
    CycleActive = true;
    WaitForTimer_Timer();
}

QList<LiveChannel> DiscreteView::LiveChannels() const {
    const auto state = [](const QString &text) -> std::optional<double> {
        if (text == QLatin1String("ON")) return 1.0;
        if (text == QLatin1String("OFF")) return 0.0;
        return std::nullopt;
    };
    QList<LiveChannel> channels;
    const bool one = m_discrete.fields.size() == 1;
    for (qsizetype f = 0; f < m_discrete.fields.size(); ++f) {
        const QString caption = one ? QStringLiteral("Ch") : m_discrete.captions.value(f);
        for (int ch = 1; ch <= m_discrete.channels; ++ch)
            channels.append({QStringLiteral("%1 %2").arg(caption).arg(ch),
                             field(m_discrete.fields.at(f), ch), state});
    }
    return channels;
}

void DiscreteView::ClearFields(const QStringList &controls, int ch) {
    for (const QString &control : controls) {
        QLineEdit *box = field(control, ch);
        box->clear();
        box->repaint();
    }
}

void DiscreteView::procCycDataRead() {
    const QString model = txtCardType->text();
    if (model == QLatin1String("NONE") || model == QLatin1String("UNKNOWN")) return;
    AddressCard();
    WriteData(m_spec.retries, "00", "01", "0");
    // A change of card must not wait for 64 reads: the selector's focus ends the pass between
    // two channels, silently.
    for (int ch = 1; ch <= m_discrete.channels && !CardSelFocus; ++ch) {
        ClearFields(m_discrete.clearedBeforeRead, ch);
        const QString reply = ReadData(m_spec.retries, m_discrete.group, QString::number(ch + 9));
        if (reply.isEmpty()) {
            LinkLostDuringCycle();
            return;
        }
        const QStringList states = m_discrete.decode(ValueAfterColon(reply));
        ClearFields(m_discrete.clearedAfterRead, ch);
        if (m_discrete.pauseMs > 0) Clock::pause(m_discrete.pauseMs);
        if (states.size() != m_discrete.fields.size()) continue;
        for (qsizetype f = 0; f < states.size(); ++f)
            ShowState(field(m_discrete.fields.at(f), ch), states.at(f));
    }
}

DiscreteIoView::DiscreteIoView(DiscreteSpec plan, OverviewBytesSpec overview, QWidget *parent)
    : DiscreteView(std::move(plan), parent), m_overview(std::move(overview)) {}

void DiscreteIoView::ShowChDataIO(int slot) {
    for (int first : m_overview.firstLamps)
        for (int ch = first; ch < first + 8; ++ch)
            Overview()->lblDIDataCh(slot, ch)->setVisible(true);
}

bool DiscreteIoView::setOverViewDataIO(int slot) {
    FrmOverview *overview = Overview();
    for (int first : m_overview.firstLamps)
        overview->NeutralLamps(slot, first, first + 7);
    const QString reply = ReadData(m_spec.retries, "00", m_overview.item);
    if (reply.isEmpty()) return false;
    const QStringList bytes = m_overview.bytes(ValueAfterColon(reply));
    if (bytes.size() != m_overview.firstLamps.size()) return true;
    for (qsizetype b = 0; b < bytes.size(); ++b) {
        const QString bits = ByteBitsLowFirst(bytes.at(b));
        for (int bit = 0; bit < 8; ++bit)
            overview->SetSlotLamp(slot, m_overview.firstLamps.at(b) + bit, bits.mid(bit, 1));
    }
    return true;
}

CardView *MakeDiscreteView(const QString &formName) {
    const DiscreteSpec *plan = FindDiscreteSpec(formName);
    if (!plan) return nullptr;
    if (formName == QLatin1String("frmXC8"))
        return new DiscreteIoView(*plan, {"26",
                                          [](const QString &v) {
                                              return QStringList{v.left(2), v.right(2)};
                                          },
                                          {1, 17}});
    if (formName == QLatin1String("frmQTC16"))
        return new DiscreteIoView(
            *plan, {"18", [](const QString &v) { return threeParts(v); }, {1, 17, 25}});
    return new DiscreteView(*plan);
}
