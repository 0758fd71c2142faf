#include "views/common/cardview.h"

#include "link/clock.h"
#include "link/exchange.h"
#include "rack/connection.h"
#include "rack/limits.h"
#include "rack/registry.h"
#include "rack/textroutines.h"
#include "ui/frmloading.h"
#include "ui/people.h"
#include "ui/trendplot.h"
#include "ui/viewbuilders.h"
#include "views/common/cardcompare.h"

#include <QEvent>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace {

// Keeps a button enabled exactly while another one is.
class EnabledMirror : public QObject {
public:
    EnabledMirror(QWidget *leader, QWidget *follower) : QObject(follower), m_follower(follower) {
        leader->installEventFilter(this);
        follower->setEnabled(leader->isEnabled());
    }
    bool eventFilter(QObject *watched, QEvent *event) override {
        if (event->type() == QEvent::EnabledChange)
            m_follower->setEnabled(static_cast<QWidget *>(watched)->isEnabled());
        return false;
    }

private:
    QWidget *m_follower;
};

} // namespace

namespace StandardParams {

ParamSpec zeroScale() {
    return {"txtZScale",
            "Scale",
            "Zero",
            "01",
            [](int ch) { return 2 * ch + 40; },
            Cell::Param,
            [](int ch) { return (ch - 1) * 4 + 1; },
            FieldKind::Int,
            ZeroScaleLimit,
            "Zero Scale:Incorrect settings"};
}

ParamSpec fullScale() {
    return {"txtFScale",
            "Scale",
            "Full",
            "01",
            [](int ch) { return 2 * ch + 41; },
            Cell::Param,
            [](int ch) { return (ch - 1) * 4 + 2; },
            FieldKind::Int,
            FullScaleLimit,
            "Full Scale:Incorrect settings"};
}

ParamSpec zeroAdjust() {
    return {"txtBias",
            "Adjust",
            "Zero",
            "01",
            [](int ch) { return 2 * ch + 8; },
            Cell::Param,
            [](int ch) { return (ch - 1) * 4 + 3; },
            FieldKind::Real,
            ZeroAdjustLimit,
            "Zero Adjust:Incorrect settings"};
}

ParamSpec fullAdjust() {
    return {"txtGain",
            "Adjust",
            "Full",
            "01",
            [](int ch) { return 2 * ch + 9; },
            Cell::Param,
            [](int ch) { return (ch - 1) * 4 + 4; },
            FieldKind::Real,
            FullAdjustLimit,
            "Full Adjust:Incorrect settings"};
}

ParamSpec unusedFlag() {
    return {"txtEnable",
            "",
            "Unused",
            "02",
            [](int ch) { return ch + 41; },
            Cell::ChParam,
            [](int ch) { return ch; },
            FieldKind::Flag,
            std::nullopt,
            QString()};
}

} // namespace StandardParams

CardView::CardView(ViewSpec plan, QWidget *parent) : QWidget(parent), m_spec(std::move(plan)) {
    setObjectName(m_spec.formName);
    setFixedSize(kViewWidth, kViewHeight);
    auto *layout = new QVBoxLayout(this);

    fraSetModel = new QGroupBox(this);
    fraSetModel->setObjectName(m_spec.headerFrame);
    auto *headerRows = new QVBoxLayout(fraSetModel);
    auto *header = new QHBoxLayout;
    m_headerTop = header;
    m_headerTools = new QHBoxLayout;
    headerRows->addLayout(m_headerTop);
    headerRows->addLayout(m_headerTools);
    txtCardType = ViewBuilders::valueField(fraSetModel, "txtCardType", 10);
    txtCardNo = ViewBuilders::valueField(fraSetModel, "txtCardNo", 3);
    txtVerNo = ViewBuilders::valueField(fraSetModel, "txtVerNo", 10);
    for (QLineEdit *box : {txtCardType, txtCardNo, txtVerNo})
        box->setAlignment(Qt::AlignLeft);
    header->addWidget(ViewBuilders::caption(fraSetModel, m_spec.headerCaptions.value(0)));
    header->addWidget(txtCardType);
    header->addSpacing(12);
    header->addWidget(ViewBuilders::caption(fraSetModel, m_spec.headerCaptions.value(1)));
    header->addWidget(txtCardNo);
    header->addSpacing(12);
    header->addWidget(ViewBuilders::caption(fraSetModel, m_spec.headerCaptions.value(2)));
    header->addWidget(txtVerNo);
    header->addStretch();
    // The tools' buttons never take Enter from the fields.
    const auto toolButton = [&](const char *text, const char *name, const char *tip,
                                void (CardView::*click)()) {
        auto *button = new QPushButton(text, fraSetModel);
        button->setObjectName(name);
        button->setAutoDefault(false);
        button->setToolTip(tip);
        addHeaderTool(button);
        connect(button, &QPushButton::clicked, this, click);
        return button;
    };
    cmdTrend = toolButton("Trend", "cmdTrend", "A plot of the live values over time",
                          &CardView::cmdTrend_Click);
    cmdUp = nullptr;
    cmdDown = nullptr;
    cmdCompare = nullptr;
    if (m_spec.hasUpDown) {
        cmdUp = new QPushButton("Upload", fraSetModel);
        cmdUp->setObjectName("cmdUp");
        cmdDown = new QPushButton("Download", fraSetModel);
        cmdDown->setObjectName("cmdDown");
        addHeaderTool(cmdUp);
        addHeaderTool(cmdDown);
        connect(cmdUp, &QPushButton::clicked, this, &CardView::cmdUp_Click);
        connect(cmdDown, &QPushButton::clicked, this, &CardView::cmdDown_Click);
        cmdCompare = toolButton("Compare", "cmdCompare",
                                "The card's values beside what Download would write",
                                &CardView::cmdCompare_Click);
        new EnabledMirror(cmdDown, cmdCompare);
    }
    layout->addWidget(fraSetModel);

    liveFeed = new LiveFeed(this);
    liveFeed->channels = [this] { return LiveChannels(); };
    liveFeed->source = [this] {
        const QString model = fraSetModel->title();
        return QStringLiteral("%1, slot %2")
            .arg(model.isEmpty() ? txtCardType->text() : model, txtCardNo->text());
    };

    WaitForTimer = new QTimer(this);
    WaitForTimer->setObjectName("WaitForTimer");
    WaitForTimer->setSingleShot(true);
    connect(WaitForTimer, &QTimer::timeout, this, &CardView::WaitForTimer_Timer);
}

void CardView::buildBody(QVBoxLayout *layout) {
    QList<ViewBuilders::GridColumn> columns;
    for (const ParamSpec &param : m_spec.params)
        if (!param.perCard)
            columns.append({param.control, param.caption, param.groupCaption,
                            param.kind == FieldKind::Flag ? 2 : 7, false, false, param.channels});
    ViewBuilders::GridColumn values{m_spec.valueControl, "Value", m_spec.valueGroupCaption, 9, true,
                                    !m_spec.valueArray};
    columns.append(values);
    columns.append(m_spec.extraColumns);
    auto *box = new QWidget(this);
    QGridLayout *grid = ViewBuilders::channelGrid(box, columns, m_spec.channels);
    grid->setColumnStretch(columns.size() + 1, 1);
    box->setLayout(grid);
    layout->addWidget(box);
    layout->addStretch();
    InstallFieldBehaviour();
}

void CardView::InstallFieldBehaviour() {
    for (const ParamSpec &param : m_spec.params) {
        for (int ch = 1; ch <= m_spec.channels; ++ch) {
            if (!hasChannel(param, ch)) continue;
            QLineEdit *box = paramField(param, ch);
            if (!box) continue; // a per-card field the view has not placed
            if (param.selectOnFocus) InstallSelectAllOnFocus(box);
            if (!m_spec.keyFilters) continue;
            if (param.keyFilter) {
                if (*param.keyFilter) InstallKeyFilter(box, *param.keyFilter);
                continue;
            }
            switch (param.kind) {
            case FieldKind::Int:
                InstallKeyFilter(box, KeyInt);
                break;
            case FieldKind::Real:
                InstallKeyFilter(box, KeyReal);
                break;
            case FieldKind::Flag:
                InstallKeyFilter(box, KeyFlag);
                break;
            }
        }
    }
}

QLineEdit *CardView::field(const QString &control, int ch) const {
    return findChild<QLineEdit *>(ViewBuilders::arrayName(control, ch));
}

QLineEdit *CardView::paramField(const ParamSpec &param, int ch) const {
    return param.perCard ? findChild<QLineEdit *>(param.control) : field(param.control, ch);
}

bool CardView::hasChannel(const ParamSpec &param, int ch) {
    if (param.perCard) return ch == 1;
    return param.channels <= 0 || ch <= param.channels;
}

QLineEdit *CardView::valueBox(int ch) const {
    const ViewBuilders::GridColumn column{m_spec.valueControl, {}, {}, 0, true, !m_spec.valueArray};
    return findChild<QLineEdit *>(ViewBuilders::columnName(column, ch));
}

// Entering a view: the order matters, the first tick runs inside SetScaleMinMax.
void CardView::build() {
    if (m_built) return;
    m_built = true;
    buildBody(static_cast<QVBoxLayout *>(layout()));
    cmdTrend->setVisible(!LiveChannels().isEmpty());
    fitHeader();
}

void CardView::addHeaderTool(QWidget *tool) {
    m_headerToolWidgets.append(tool);
    m_headerTop->addWidget(tool);
}

void CardView::fitHeader() {
    if (layout()->totalMinimumSize().width() <= width()) return;
    m_headerTools->addStretch();
    for (QWidget *tool : std::as_const(m_headerToolWidgets)) {
        m_headerTop->removeWidget(tool);
        m_headerTools->addWidget(tool);
    }
}

void CardView::OpenView(const QString &model) {
    build();
    // No tick of an earlier visit may run in the middle of the opening's exchanges.
    WaitForTimer->stop();
    fraSetModel->setTitle(model);
    txtCardType->setText(model);
    txtCardNo->setText(QString::number(CardNo));
    SelFormName = m_spec.tag;
    ShowView(this);
    if (!m_spec.versionBeforeCycle) SetScaleMinMax(model);
    AddressCard();
    txtVerNo->setText(ValueAfterColon(ReadData(m_spec.retries, "00", "40")));
    if (m_spec.versionBeforeCycle) SetScaleMinMax(model);
}

void CardView::SetScaleMinMax(const QString &) {
    DownloadPending = false;
    UploadPending = false;
    ClearPending = false;
    PresetPending = false;
    ComparePending = false;
    CycleActive = true;
    ViewRefresh();
    WaitForTimer_Timer();
}

void CardView::cmdUp_Click() {
    WaitForTimer->setInterval(Clock::ms(10));
    UploadPending = true;
}

void CardView::cmdDown_Click() {
    WaitForTimer->setInterval(Clock::ms(10));
    DownloadPending = true;
}

void CardView::CmdClear_Click() {
    WaitForTimer->setInterval(Clock::ms(10));
    ClearPending = true;
}

void CardView::cmdPreset_Click() {
    WaitForTimer->setInterval(Clock::ms(10));
    PresetPending = true;
}

void CardView::cmdTrend_Click() {
    ShowTrendPlot(liveFeed, this);
}

void CardView::cmdCompare_Click() {
    WaitForTimer->setInterval(Clock::ms(10));
    ComparePending = true;
}

void CardView::WaitForTimer_Timer() {
    // A tick that falls while another exchange waits for its reply (the opening's, on a slow
    // rack) comes again a tick later rather than talk over it.
    if (StepUnderWay()) {
        WaitForTimer->start(Clock::ms(m_spec.tickMs));
        return;
    }
    WaitForTimer->stop();
    ViewTick();
    if (KeepTicking()) WaitForTimer->start(Clock::ms(m_spec.tickMs));
}

void CardView::ViewTick() {
    if (!isVisible()) {
        CycleActive = false;
    } else if (CardSelFocus) {
        return;
    } else if (DownloadPending) {
        DownloadPending = false;
        ViewDownload();
    } else if (UploadPending) {
        UploadPending = false;
        ViewUpload();
    } else if (ClearPending) {
        ClearPending = false;
        ViewClear();
    } else if (PresetPending) {
        PresetPending = false;
        ViewPreset();
    } else if (ComparePending) {
        ComparePending = false;
        ViewCompare();
    } else {
        ReadLive();
    }
}

// A read that ends the session got no answer; one that leaves it standing filled the boxes.
void CardView::ReadLive() {
    const bool connected = IsConnected;
    procCycDataRead();
    if (!connected) return;
    if (IsConnected)
        liveFeed->shown();
    else
        liveFeed->lost();
}

QList<LiveChannel> CardView::LiveChannels() const {
    QList<LiveChannel> channels;
    for (int ch = 1; ch <= m_spec.channels; ++ch)
        if (QLineEdit *box = valueBox(ch)) channels.append({QStringLiteral("Ch %1").arg(ch), box});
    return channels;
}

void CardView::ViewCompare() {
    ShowCompare(*this, CardCompare::Run(*this));
}

void CardView::TakeEditsFrom(const CardView &source) {
    CopyControlStates(source, *this);
}

const ParamSpec *CardView::ParamOfCell(Cell kind, int index, int &ch) const {
    for (const ParamSpec &param : m_spec.params) {
        if (param.cellKind != kind || !param.cell) continue;
        for (ch = 1; ch <= m_spec.channels; ++ch)
            if (hasChannel(param, ch) && param.cell(ch) == index) return &param;
    }
    return nullptr;
}

QString CardView::CellName(Cell kind, int index) const {
    int ch = 0;
    if (const ParamSpec *param = ParamOfCell(kind, index, ch)) {
        QStringList words;
        for (const QString &word : {param->groupCaption, param->caption})
            if (!word.trimmed().isEmpty()) words.append(word.trimmed());
        const QString name = words.isEmpty() ? param->control : words.join(QLatin1Char(' '));
        return param->perCard ? name : QStringLiteral("Ch %1 %2").arg(ch).arg(name);
    }
    return QString();
}

QString &CardView::cellOf(const ParamSpec &param, int ch) const {
    return param.cellKind == Cell::ChParam ? record().ChParam(param.cell(ch))
                                           : record().Param(param.cell(ch));
}

QStringList CardView::passes() const {
    QStringList groups;
    for (const PassSpec &pass : workerPasses())
        groups.append(pass.group);
    return groups;
}

void CardView::setPassProgress(int pass, int ch) const {
    if (pass < m_spec.progress.size()) SetProgress(m_spec.progress.at(pass)(ch));
}

QList<PassSpec> CardView::workerPasses() const {
    if (!m_spec.passPlan.isEmpty()) return m_spec.passPlan;
    QList<PassSpec> runs;
    for (const ParamSpec &param : m_spec.params) {
        // A parameter joins the run of its group, unless it asks for one of its own.
        PassSpec *joined = nullptr;
        bool groupSeen = false;
        for (PassSpec &run : runs) {
            if (run.group != param.group) continue;
            groupSeen = true;
            if (!param.ownPass) joined = &run;
        }
        if (!joined) {
            runs.append({param.group, {}, !groupSeen, m_spec.progress.value(runs.size()), 0});
            joined = &runs.last();
        }
        joined->params.append(param);
        const int channels = param.perCard        ? 1
                             : param.channels > 0 ? qMin(param.channels, m_spec.channels)
                                                  : m_spec.channels;
        joined->channels = qMax(joined->channels, channels);
    }
    return runs;
}

void CardView::AddressCard() {
    WriteData(m_spec.retries, "00", "01", "F");
    WriteData(m_spec.retries, "00", "41", QString::number(CardNo));
}

void CardView::OpenGroup(const QString &group) {
    WriteData(m_spec.retries, group, "01", "1");
}

QString CardView::ReadValue(const QString &group, int item) {
    return ValueAfterColon(ReadData(m_spec.retries, group, QString::number(item)));
}

QString CardView::WriteValue(const QString &group, int item, const QString &data) {
    return WriteData(m_spec.retries, group, QString::number(item), data);
}

void CardView::CopyHeaderToRecord() {
    record().CardName = txtCardType->text();
    record().VerNo = txtVerNo->text();
}

void CardView::ShowParam(const ParamSpec &param, int ch, const QString &text) {
    QLineEdit *box = paramField(param, ch);
    if (param.kind == FieldKind::Flag)
        ShowFlag(box, text);
    else
        box->setText(text);
}

void CardView::ViewUpload() {
    CopyHeaderToRecord();
    OpenProgress(12, "Uploading");
    AddressCard();
    for (const PassSpec &pass : workerPasses()) {
        const QString group = wireGroup(pass.group);
        if (pass.opensGroup) OpenGroup(group);
        for (int ch = 1; ch <= channelsOf(pass); ++ch) {
            for (const ParamSpec &param : pass.params) {
                if (!hasChannel(param, ch)) continue;
                ShowParam(param, ch, ReadValue(group, param.item(ch)));
                cellOf(param, ch) = paramField(param, ch)->text();
            }
            if (pass.progress) SetProgress(pass.progress(ch));
        }
    }
    UploadTail();
    CloseProgress();
}

bool CardView::ValidateDownload() {
    if (!m_spec.rangeCheck) return true;
    for (int ch = 1; ch <= m_spec.channels; ++ch) {
        for (const ParamSpec &param : m_spec.params) {
            if (!param.limit || !hasChannel(param, ch)) continue;
            const QString text = paramField(param, ch)->text();
            if (text.isEmpty()) continue;
            // A text that is no number (a lone "-", a "CNG" from an Upload) is not a range
            // failure: the acceptance test keeps it off the wire.
            bool ok = false;
            const double value = text.toDouble(&ok);
            if (!ok) continue;
            if (!InRange(value, *param.limit)) {
                People::message(param.rangeMessage, QString(), People::Icon::Information);
                return false;
            }
        }
    }
    return true;
}

bool CardView::Acceptable(const ParamSpec &param, const QString &text) const {
    switch (param.acceptance.value_or(m_spec.acceptance)) {
    case Acceptance::Always:
        return true;
    case Acceptance::NotEmpty:
        return !text.isEmpty();
    case Acceptance::Syntax:
        break;
    }
    switch (param.kind) {
    case FieldKind::Int:
        return IsIntText(text);
    case FieldKind::Real:
        return IsRealText(text);
    case FieldKind::Flag:
        return text == QLatin1String("1") || text == QLatin1String("0");
    }
    return false;
}

void CardView::ViewDownload() {
    if (!ValidateDownload()) return;
    CopyHeaderToRecord();
    AddressCard();
    bool progressOpen = false;
    for (const PassSpec &pass : workerPasses()) {
        const QString group = wireGroup(pass.group);
        if (pass.opensGroup) OpenGroup(group);
        if (!progressOpen) OpenProgress(12, "Downloading");
        progressOpen = true;
        for (int ch = 1; ch <= channelsOf(pass); ++ch) {
            for (const ParamSpec &param : pass.params) {
                if (!hasChannel(param, ch)) continue;
                QLineEdit *box = paramField(param, ch);
                if (!Acceptable(param, box->text())) {
                    if (param.kind == FieldKind::Flag && m_spec.flagRefillPlain)
                        box->setText(cellOf(param, ch));
                    else
                        ShowParam(param, ch, cellOf(param, ch));
                    continue;
                }
                const QString reply = WriteValue(group, param.item(ch), box->text());
                // A flag shows what the card echoed; other fields keep what was typed.
                if (param.kind == FieldKind::Flag) ShowFlag(box, ValueAfterColon(reply));
                cellOf(param, ch) = box->text();
            }
            if (pass.progress) SetProgress(pass.progress(ch));
        }
    }
    DownloadTail();
    CloseProgress();
}

QString CardView::ValueText(const QString &reply) const {
    const QString value = ValueAfterColon(reply);
    return m_spec.keepDecimalPoint ? value : DeleteDot(value);
}

bool CardView::ReadLiveValues(QStringList &values) {
    values.clear();
    for (int ch = 1; ch <= m_spec.channels; ++ch) {
        const QString reply =
            ReadData(m_spec.retries, "00", QString::number(m_spec.firstValueItem + ch - 1));
        if (reply.isEmpty()) {
            LinkLostDuringCycle();
            return false;
        }
        values.append(reply);
    }
    return true;
}

void CardView::LinkLostDuringCycle() {
    if (!IsConnected) return;
    People::message("Uploading incomplete", "Uploading", People::Icon::Stop);
    if (m_spec.stopOnLinkLoss) {
        WaitForTimer->stop();
        CycleActive = false;
    }
    DisconnectRack();
}

void CardView::ClearValueBoxes() {
    for (int ch = 1; ch <= m_spec.channels; ++ch) {
        valueBox(ch)->clear();
        valueBox(ch)->repaint();
    }
}

void CardView::procCycDataRead() {
    AddressCard();
    QStringList values;
    if (!ReadLiveValues(values)) return;
    ClearValueBoxes();
    Clock::pause(m_spec.pauseMs);
    for (int ch = 1; ch <= m_spec.channels; ++ch)
        valueBox(ch)->setText(ValueText(values.at(ch - 1)));
}

void CardView::ViewRefresh() {
    for (const ParamSpec &param : m_spec.params)
        for (int ch = 1; ch <= m_spec.channels; ++ch)
            if (hasChannel(param, ch)) ShowParam(param, ch, cellOf(param, ch));
}
