#include "ui/trendplot.h"

#include "ui/people.h"
#include "ui/textfile.h"

#include <QChart>
#include <QChartView>
#include <QCloseEvent>
#include <QComboBox>
#include <QDateTimeAxis>
#include <QDir>
#include <QHBoxLayout>
#include <QHash>
#include <QLabel>
#include <QLegendMarker>
#include <QLineEdit>
#include <QLineSeries>
#include <QListWidget>
#include <QPushButton>
#include <QRegularExpression>
#include <QTimer>
#include <QVBoxLayout>
#include <QValueAxis>
#include <cmath>
#include <limits>

namespace {

// The span choices, in seconds, and the one a new plot starts with.
const QList<QPair<QString, int>> kSpans = {{"1 min", 60},   {"2 min", 120},   {"5 min", 300},
                                           {"10 min", 600}, {"30 min", 1800}, {"1 h", 3600}};
constexpr int kStartSpan = 0;
// What is kept: the longest span.
constexpr int kKeptSeconds = 3600;
// Channels drawn when a plot opens; the others wait to be picked.
constexpr int kStartChannels = 8;
// A silence longer than this, and three times the interval before it, breaks the lines: the
// view was busy with a worker, left or stopped, and nothing was measured in between.
constexpr qint64 kGapMs = 3000;

const QList<QColor> kColours = {{31, 119, 180},  {214, 39, 40},  {44, 160, 44},   {255, 127, 14},
                                {148, 103, 189}, {140, 86, 75},  {227, 119, 194}, {127, 127, 127},
                                {188, 189, 34},  {23, 190, 207}, {0, 0, 128},     {128, 0, 0}};

const QString kTimeFormat = QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz");

QString csvField(const QString &text) {
    if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')) &&
        !text.contains(QLatin1Char('\n')) && !text.contains(QLatin1Char('\r')))
        return text;
    QString quoted = text;
    quoted.replace(QLatin1String("\""), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QString clockText(const QDateTime &time) {
    return time.toString(QStringLiteral("hh:mm:ss"));
}

QHash<QString, QPointer<FrmTrend>> &plots() {
    static QHash<QString, QPointer<FrmTrend>> table;
    return table;
}

} // namespace

// ---- The samples ------------------------------------------------------------------------------

void TrendSamples::add(const QDateTime &time, const QList<QPair<QString, QString>> &values) {
    Sample sample{time, Kind::Values, {}};
    for (const auto &[name, text] : values) {
        qsizetype channel = m_names.indexOf(name);
        if (channel < 0) {
            m_names.append(name);
            channel = m_names.size() - 1;
        }
        while (sample.texts.size() <= channel)
            sample.texts.append(QString());
        sample.texts[channel] = text;
    }
    m_samples.append(sample);
}

void TrendSamples::addMark(const QDateTime &time, Kind kind) {
    // Two marks in a row say no more than one.
    if (!m_samples.isEmpty() && m_samples.last().kind == kind) return;
    m_samples.append({time, kind, {}});
}

void TrendSamples::dropBefore(const QDateTime &limit) {
    qsizetype old = 0;
    while (old < m_samples.size() && m_samples.at(old).time < limit)
        ++old;
    m_samples.remove(0, old);
}

QStringList TrendSamples::csvLines() const {
    QStringList header{QStringLiteral("Time")};
    for (const QString &name : m_names)
        header.append(csvField(name));
    header.append(QStringLiteral("Note"));
    QStringList lines{header.join(QLatin1Char(','))};
    for (const Sample &sample : m_samples) {
        QStringList fields{sample.time.toString(kTimeFormat)};
        for (qsizetype channel = 0; channel < m_names.size(); ++channel)
            fields.append(csvField(text(sample, channel)));
        switch (sample.kind) {
        case Kind::Values:
            fields.append(QString());
            break;
        case Kind::Lost:
            fields.append(QStringLiteral("no answer"));
            break;
        case Kind::Break:
            fields.append(QStringLiteral("not recorded before this"));
            break;
        }
        lines.append(fields.join(QLatin1Char(',')));
    }
    return lines;
}

// ---- The window -------------------------------------------------------------------------------

FrmTrend::FrmTrend(LiveFeed *feed, const QString &source, QWidget *parent)
    : QWidget(parent, Qt::Window), m_source(source) {
    setObjectName("frmTrend");
    setWindowTitle(QStringLiteral("Trend: %1").arg(source));
    resize(900, 560);

    auto *layout = new QVBoxLayout(this);
    auto *bar = new QHBoxLayout;
    bar->addWidget(new QLabel("Span", this));
    cboSpan = new QComboBox(this);
    cboSpan->setObjectName("cboSpan");
    for (const auto &[caption, seconds] : kSpans)
        cboSpan->addItem(caption, seconds);
    cboSpan->setCurrentIndex(kStartSpan);
    bar->addWidget(cboSpan);
    cmdPause = new QPushButton("Pause", this);
    cmdPause->setObjectName("cmdPause");
    cmdPause->setAutoDefault(false);
    bar->addWidget(cmdPause);
    cmdExport = new QPushButton("Export...", this);
    cmdExport->setObjectName("cmdExport");
    cmdExport->setAutoDefault(false);
    bar->addWidget(cmdExport);
    bar->addSpacing(12);
    lblStatus = new QLabel(this);
    lblStatus->setObjectName("lblStatus");
    bar->addWidget(lblStatus, 1);
    layout->addLayout(bar);

    auto *body = new QHBoxLayout;
    lstChannels = new QListWidget(this);
    lstChannels->setObjectName("lstChannels");
    lstChannels->setFixedWidth(170);
    body->addWidget(lstChannels);

    m_chart = new QChart;
    m_chart->legend()->setAlignment(Qt::AlignBottom);
    m_chart->setMargins(QMargins(4, 4, 4, 4));
    m_timeAxis = new QDateTimeAxis(m_chart);
    m_timeAxis->setFormat("hh:mm:ss");
    m_timeAxis->setTickCount(7);
    // A date axis first given its range once on the screen never shows its labels.
    const QDateTime now = QDateTime::currentDateTime();
    m_timeAxis->setRange(now.addSecs(-kSpans.at(kStartSpan).second), now);
    m_valueAxis = new QValueAxis(m_chart);
    m_valueAxis->setLabelFormat("%g");
    m_chart->addAxis(m_timeAxis, Qt::AlignBottom);
    m_chart->addAxis(m_valueAxis, Qt::AlignLeft);
    chartView = new QChartView(m_chart, this);
    chartView->setObjectName("chartView");
    chartView->setRenderHint(QPainter::Antialiasing);
    body->addWidget(chartView, 1);
    layout->addLayout(body, 1);

    m_clock = new QTimer(this);
    m_clock->setInterval(1000);
    connect(m_clock, &QTimer::timeout, this, &FrmTrend::refresh);
    connect(cmdPause, &QPushButton::clicked, this, &FrmTrend::cmdPause_Click);
    connect(cmdExport, &QPushButton::clicked, this, &FrmTrend::cmdExport_Click);
    connect(cboSpan, &QComboBox::currentIndexChanged, this, &FrmTrend::refresh);
    connect(lstChannels, &QListWidget::itemChanged, this, &FrmTrend::refresh);
    follow(feed);
}

void FrmTrend::follow(LiveFeed *feed) {
    if (m_feed == feed) return;
    if (m_feed) disconnect(m_feed, nullptr, this, nullptr);
    m_feed = feed;
    if (!feed) return;
    connect(feed, &LiveFeed::valuesShown, this, &FrmTrend::takeSample);
    connect(feed, &LiveFeed::valuesLost, this, &FrmTrend::takeLoss);
}

int FrmTrend::spanSeconds() const {
    return cboSpan->currentData().toInt();
}

void FrmTrend::showEvent(QShowEvent *event) {
    QWidget::showEvent(event);
    if (!m_open && !m_samples.samples().isEmpty())
        m_samples.addMark(QDateTime::currentDateTime(), TrendSamples::Kind::Break);
    m_open = true;
    m_clock->start();
    refresh();
}

void FrmTrend::closeEvent(QCloseEvent *event) {
    m_open = false;
    m_clock->stop();
    QWidget::closeEvent(event);
}

// Only the card this plot belongs to counts: the same view serves every slot of its family.
void FrmTrend::takeSample() {
    if (!m_open || !m_feed || !m_feed->channels) return;
    if (m_feed->source && m_feed->source() != m_source) return;
    const QList<LiveChannel> channels = m_feed->channels();
    QList<QPair<QString, QString>> values;
    for (const LiveChannel &channel : channels)
        if (channel.box) values.append({channel.name, channel.box->text()});
    if (values.isEmpty()) return;
    const QDateTime now = QDateTime::currentDateTime();
    m_samples.add(now, values);
    for (const LiveChannel &channel : channels) {
        const qsizetype index = m_samples.names().indexOf(channel.name);
        while (m_numbers.size() <= index)
            m_numbers.append(nullptr);
        if (index >= 0) m_numbers[index] = channel.number;
    }
    m_samples.dropBefore(now.addSecs(-kKeptSeconds));
    syncChannelList();
    refresh();
}

void FrmTrend::takeLoss() {
    if (!m_open || !m_feed) return;
    if (m_feed->source && m_feed->source() != m_source) return;
    m_lastLoss = QDateTime::currentDateTime();
    m_samples.addMark(m_lastLoss, TrendSamples::Kind::Lost);
    refresh();
}

void FrmTrend::syncChannelList() {
    const QStringList &names = m_samples.names();
    if (lstChannels->count() == names.size()) return;
    const QSignalBlocker quiet(lstChannels);
    for (qsizetype n = lstChannels->count(); n < names.size(); ++n) {
        auto *item = new QListWidgetItem(names.at(n), lstChannels);
        item->setFlags(Qt::ItemIsUserCheckable | Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        item->setCheckState(n < kStartChannels ? Qt::Checked : Qt::Unchecked);
        item->setForeground(kColours.at(n % kColours.size()));
    }
}

std::optional<double> FrmTrend::numberOf(qsizetype channel, const QString &text) const {
    const auto &reader = m_numbers.value(channel);
    return reader ? reader(text) : PlainNumber(text);
}

QList<QList<QPointF>> FrmTrend::segments(qsizetype channel) const {
    QList<QList<QPointF>> runs;
    QList<QPointF> run;
    const auto endRun = [&] {
        if (!run.isEmpty()) runs.append(run);
        run.clear();
    };
    QDateTime previous;
    qint64 previousStep = 0;
    for (const TrendSamples::Sample &sample : m_samples.samples()) {
        if (sample.kind != TrendSamples::Kind::Values) {
            endRun();
            previous = QDateTime();
            continue;
        }
        if (previous.isValid()) {
            const qint64 step = previous.msecsTo(sample.time);
            if (step > kGapMs && step > 3 * previousStep) endRun();
            previousStep = step;
        }
        previous = sample.time;
        const std::optional<double> value = numberOf(channel, m_samples.text(sample, channel));
        if (!value) {
            endRun();
            continue;
        }
        run.append(QPointF(static_cast<qreal>(sample.time.toMSecsSinceEpoch()), *value));
    }
    endRun();
    return runs;
}

void FrmTrend::drawChannel(qsizetype channel, const QDateTime &from, const QDateTime &to,
                           double &low, double &high) {
    while (m_series.size() <= channel)
        m_series.append(QList<QLineSeries *>());
    QList<QLineSeries *> &lines = m_series[channel];
    const QListWidgetItem *item = lstChannels->item(static_cast<int>(channel));
    QList<QList<QPointF>> runs;
    if (item && item->checkState() == Qt::Checked) {
        const qreal first = static_cast<qreal>(from.toMSecsSinceEpoch());
        const qreal last = static_cast<qreal>(to.toMSecsSinceEpoch());
        for (const QList<QPointF> &run : segments(channel)) {
            QList<QPointF> shown;
            for (const QPointF &point : run)
                if (point.x() >= first && point.x() <= last) shown.append(point);
            if (shown.isEmpty()) continue;
            for (const QPointF &point : shown) {
                low = std::min(low, point.y());
                high = std::max(high, point.y());
            }
            runs.append(shown);
        }
    }
    const QColor colour = kColours.at(channel % kColours.size());
    while (lines.size() < runs.size()) {
        auto *series = new QLineSeries;
        series->setName(m_samples.names().value(channel));
        series->setColor(colour);
        m_chart->addSeries(series);
        series->attachAxis(m_timeAxis);
        series->attachAxis(m_valueAxis);
        lines.append(series);
    }
    for (qsizetype n = 0; n < lines.size(); ++n) {
        QLineSeries *series = lines.at(n);
        series->replace(n < runs.size() ? runs.at(n) : QList<QPointF>());
        series->setVisible(n < runs.size());
        // One entry in the legend a channel, however often its line is broken.
        for (QLegendMarker *marker : m_chart->legend()->markers(series))
            marker->setVisible(n == 0 && n < runs.size());
    }
}

void FrmTrend::refresh() {
    lblStatus->setText(statusText());
    if (m_paused) return;
    const QDateTime to = QDateTime::currentDateTime();
    const QDateTime from = to.addSecs(-spanSeconds());
    m_timeAxis->setRange(from, to);
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (qsizetype channel = 0; channel < m_samples.names().size(); ++channel)
        drawChannel(channel, from, to, low, high);
    if (low > high) {
        low = 0;
        high = 1;
    } else if (low == high) {
        low -= 1;
        high += 1;
    } else {
        const double room = (high - low) * 0.05;
        low -= room;
        high += room;
    }
    m_valueAxis->setRange(low, high);
}

QString FrmTrend::statusText() const {
    QString text;
    if (m_paused)
        text = QStringLiteral("Paused at %1; recording goes on. ").arg(clockText(m_pausedAt));
    const QList<TrendSamples::Sample> &all = m_samples.samples();
    if (all.isEmpty()) return text + QStringLiteral("Waiting for the view's live values.");
    const TrendSamples::Sample &last = all.last();
    if (last.kind == TrendSamples::Kind::Lost)
        return text +
               QStringLiteral("No answer at %1: the line is lost.").arg(clockText(last.time));
    const qint64 quiet = last.time.msecsTo(QDateTime::currentDateTime());
    if (last.kind == TrendSamples::Kind::Values && quiet > kGapMs)
        return text + QStringLiteral("No values since %1: the view is not reading.")
                          .arg(clockText(last.time));
    qsizetype count = 0;
    for (const TrendSamples::Sample &sample : all)
        if (sample.kind == TrendSamples::Kind::Values) ++count;
    return text +
           QStringLiteral("%1 samples, the last at %2.").arg(count).arg(clockText(last.time));
}

void FrmTrend::cmdPause_Click() {
    m_paused = !m_paused;
    m_pausedAt = QDateTime::currentDateTime();
    cmdPause->setText(m_paused ? "Resume" : "Pause");
    refresh();
}

void FrmTrend::cmdExport_Click() {
    if (m_samples.samples().isEmpty()) {
        People::message("There are no samples to export yet.", "Export", People::Icon::Information);
        return;
    }
    People::FileRequest request;
    request.save = true;
    request.title = QStringLiteral("Export samples");
    request.filter = QStringLiteral("CSV files (*.csv);;All files (*)");
    QString name = m_source;
    name.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9]+")), QStringLiteral("-"));
    request.defaultName = QStringLiteral("trend-%1.csv").arg(name);
    const QString path = People::chooseFile(request);
    if (path.isEmpty()) return;
    const QString error = TextFile::writeLines(path, m_samples.csvLines());
    if (!error.isEmpty())
        People::message(QStringLiteral("%1\n\n%2").arg(QDir::toNativeSeparators(path), error),
                        "Export", People::Icon::Exclamation);
}

FrmTrend *ShowTrendPlot(LiveFeed *feed, QWidget *anchor) {
    if (!feed) return nullptr;
    const QString source = feed->source ? feed->source() : QString();
    QPointer<FrmTrend> &plot = plots()[source];
    if (!plot)
        plot = new FrmTrend(feed, source, anchor ? anchor->window() : nullptr);
    else
        plot->follow(feed);
    plot->show();
    plot->raise();
    plot->activateWindow();
    return plot;
}

FrmTrend *TrendPlotOf(const QString &source) {
    return plots().value(source);
}
