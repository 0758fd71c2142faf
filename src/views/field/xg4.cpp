#include "views/field/xg4.h"

#include "link/clock.h"
#include "link/exchange.h"
#include "rack/limits.h"
#include "rack/textroutines.h"
#include "ui/frmloading.h"
#include "ui/viewbuilders.h"
#include "ui/widgets.h"
#include "views/field/fieldkit.h"
#include "views/field/xghart.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace {

constexpr int kRetries = 3;
const char *const kUnusedItem = "27";
const QStringList kUnusedEntries = {"0", "1"};

// Every channel has the same items, in a group of its own.
ParamSpec channelParam(const char *control, const char *groupCaption, const char *caption, int item,
                       int offset, FieldKind kind, Limit limit, const char *message) {
    return {control,
            groupCaption,
            caption,
            QString(),
            [item](int) { return item; },
            Cell::Param,
            [offset](int ch) { return (ch - 1) * 4 + offset; },
            kind,
            limit,
            message};
}

ViewSpec xg4Spec() {
    ViewSpec plan;
    plan.formName = QStringLiteral("frmXG4");
    plan.tag = QStringLiteral("XG4");
    plan.channels = FrmXG4::kChannels;
    plan.params = {
        channelParam("txtZScale", "Scale", "Zero", 17, 1, FieldKind::Int, ZeroScaleLimit,
                     "Please enter number -32000 - 32000"),
        channelParam("txtFScale", "Scale", "Full ", 18, 2, FieldKind::Int, FullScaleLimit,
                     "Please enter number -32000 - 32000"),
        channelParam("txtBias", "Adjust", "Zero", 14, 3, FieldKind::Real, ZeroAdjustLimit,
                     "Please enter number -320.00 - 320.00"),
        channelParam("txtGain", "Adjust", "Full ", 15, 4, FieldKind::Real, FullAdjustLimit,
                     "Please enter number -3.2000 - 3.2000"),
    };
    plan.acceptance = Acceptance::Syntax;
    return plan;
}

} // namespace

FrmXG4::FrmXG4(QWidget *parent) : CardView(xg4Spec(), parent) {}

void FrmXG4::buildBody(QVBoxLayout *layout) {
    for (int ch = 1; ch <= kChannels; ++ch)
        layout->addWidget(buildChannel(ch));
    QGroupBox *hart = MakeFrame(this, "fraHART", "HART Master Setting");
    auto *row = new QHBoxLayout(hart);
    for (int i = 0; i < kChannels; ++i) {
        SetHART[i] = MakeButton(hart, ViewBuilders::arrayName("SetHART", i),
                                QStringLiteral("HART%1").arg(i + 1));
        row->addWidget(SetHART[i]);
        connect(SetHART[i], &QPushButton::clicked, this, [this, i] { SetHART_Click(i); });
    }
    row->addStretch();
    layout->addWidget(hart);
    layout->addStretch();
}

QWidget *FrmXG4::buildChannel(int ch) {
    QGroupBox *frame =
        MakeFrame(this, QStringLiteral("fraCh%1").arg(ch), QStringLiteral("Ch. %1").arg(ch));
    auto *grid = new QGridLayout(frame);
    grid->setVerticalSpacing(2);
    auto head = [&](const QString &text, int column, int span = 1) {
        grid->addWidget(ViewBuilders::caption(frame, text, true), text.isEmpty() ? 0 : 1, column, 1,
                        span);
    };
    head("Value", 0);
    head("Unused", 1);
    head("Input Type", 2);
    QLineEdit *value = ViewBuilders::valueField(
        frame, QStringLiteral("txtParData%1").arg(ch, 2, 10, QLatin1Char('0')), 9);
    grid->addWidget(value, 2, 0);
    QComboBox *unused = new QComboBox(frame);
    unused->setObjectName(ViewBuilders::arrayName("List_ChEnable", ch));
    unused->addItems(kUnusedEntries);
    List_ChEnable[ch] = unused;
    grid->addWidget(unused, 2, 1);
    QLineEdit *type = ViewBuilders::valueField(frame, ViewBuilders::arrayName("Text1", ch), 8);
    type->setAlignment(Qt::AlignLeft);
    type->setText(" 4-20 mA");
    grid->addWidget(type, 2, 2);

    int column = 3;
    for (const ParamSpec &param : m_spec.params) {
        if (param.caption == QLatin1String("Zero"))
            grid->addWidget(ViewBuilders::caption(frame, param.groupCaption, true), 0, column, 1,
                            2);
        head(param.caption, column);
        QLineEdit *box = ViewBuilders::field(frame, ViewBuilders::arrayName(param.control, ch), 8);
        grid->addWidget(box, 2, column++);
        InstallSelectAllOnFocus(box);
        InstallKeyFilter(box, param.kind == FieldKind::Int ? KeyInt : KeyReal);
        FieldKit::InstallLeaveCheck(
            box,
            [box, param]() -> QString {
                if (box->text().isEmpty()) return {};
                return InRange(RealTextValue(box->text()), *param.limit) ? QString()
                                                                         : param.rangeMessage;
            },
            {}, true);
    }
    grid->setColumnStretch(column, 1);

    // The colour follows a pick in the list at once.
    connect(unused, &QComboBox::activated, this, [this, ch] { ColourUnused(ch); });
    return frame;
}

// The show routine: the cycle stays off until the card has been addressed and its version read;
// the view's start comes last.
void FrmXG4::OpenView(const QString &model) {
    WaitForTimer->stop();
    m_opening = true;
    CardView::OpenView(model);
    m_opening = false;
    XG4_Init(model);
}

void FrmXG4::SetScaleMinMax(const QString &model) {
    if (!m_opening) XG4_Init(model);
}

void FrmXG4::XG4_Init(const QString &model) {
    for (int ch = 1; ch <= kChannels; ++ch) {
        List_ChEnable[ch]->setCurrentIndex(0);
        ColourUnused(ch);
    }
    CardView::SetScaleMinMax(model);
}

void FrmXG4::ColourUnused(int ch) {
    const bool unused = List_ChEnable[ch]->currentText() == QLatin1String("1");
    FieldKit::SetListColour(List_ChEnable[ch], unused ? FieldKit::kListRed : FieldKit::kListGreen);
}

// A value the list does not hold leaves it as it is.
void FrmXG4::ShowUnused(int ch, const QString &value) {
    const int index = kUnusedEntries.indexOf(value);
    if (index >= 0) List_ChEnable[ch]->setCurrentIndex(index);
    ColourUnused(ch);
}

void FrmXG4::OpenChannelGroup(int ch) {
    OpenGroup(QString::number(ch));
}

void FrmXG4::ViewRefresh() {
    CardView::ViewRefresh();
    for (int ch = 1; ch <= kChannels; ++ch)
        ShowUnused(ch, record().ChParam(ch));
}

void FrmXG4::ViewUpload() {
    CopyHeaderToRecord();
    OpenProgress(12, "Uploading");
    AddressCard();
    for (int ch = 1; ch <= kChannels; ++ch) {
        OpenChannelGroup(ch);
        for (const ParamSpec &param : m_spec.params) {
            ShowParam(param, ch, ReadValue(QString::number(ch), param.item(ch)));
            cellOf(param, ch) = field(param.control, ch)->text();
        }
        SetProgress(ch);
    }
    for (int ch = 1; ch <= kChannels; ++ch) {
        OpenChannelGroup(ch);
        ShowUnused(ch, ValueAfterColon(ReadData(kRetries, QString::number(ch), kUnusedItem)));
        record().ChParam(ch) = List_ChEnable[ch]->currentText();
        SetProgress(ch + 4);
    }
    CloseProgress();
}

void FrmXG4::ViewDownload() {
    if (FieldKit::AnyRefused(this)) return;
    CopyHeaderToRecord();
    AddressCard();
    OpenProgress(12, "Downloading");
    for (int ch = 1; ch <= kChannels; ++ch) {
        OpenChannelGroup(ch);
        for (const ParamSpec &param : m_spec.params) {
            QLineEdit *box = field(param.control, ch);
            if (!Acceptable(param, box->text())) {
                box->setText(cellOf(param, ch));
                continue;
            }
            WriteValue(QString::number(ch), param.item(ch), box->text());
            cellOf(param, ch) = box->text();
        }
        SetProgress(ch);
    }
    for (int ch = 1; ch <= kChannels; ++ch) {
        OpenChannelGroup(ch);
        const QString text = List_ChEnable[ch]->currentText();
        if (kUnusedEntries.contains(text)) {
            ShowUnused(
                ch, ValueAfterColon(WriteData(kRetries, QString::number(ch), kUnusedItem, text)));
            record().ChParam(ch) = List_ChEnable[ch]->currentText();
        } else {
            ShowUnused(ch, record().ChParam(ch));
        }
        SetProgress(ch + 4);
    }
    CloseProgress();
}

QString FrmXG4::CellName(Cell kind, int index) const {
    if (kind == Cell::ChParam) return QStringLiteral("Ch %1 Unused").arg(index);
    return CardView::CellName(kind, index);
}

// --- HART master settings -------------------------------------------------------------------

FrmXG_HART *FrmXG4::hartDialog() const {
    return qobject_cast<FrmXG_HART *>(LoadedView("frmXG_HART"));
}

bool FrmXG4::KeepTicking() const {
    const FrmXG_HART *dialog = hartDialog();
    return CycleActive && !(dialog && dialog->isVisible());
}

void FrmXG4::SetHART_Click(int index) {
    auto *dialog = qobject_cast<FrmXG_HART *>(ViewByName("frmXG_HART"));
    if (!dialog) return;
    WaitForTimer->stop();
    for (QPushButton *button : SetHART)
        button->setEnabled(false);
    if (!dialog->parentWidget()) dialog->setParent(window(), Qt::Dialog);
    connect(dialog, &QDialog::finished, this, &FrmXG4::HartClosed, Qt::UniqueConnection);
    dialog->XG4_HART_Init(index);
    dialog->exec();
}

void FrmXG4::HartClosed() {
    for (QPushButton *button : SetHART)
        button->setEnabled(true);
    if (CycleActive) WaitForTimer->start(Clock::ms(m_spec.tickMs));
}
