#pragma once

#include "ui/livefeed.h"

#include <QDateTime>
#include <QList>
#include <QPointer>
#include <QStringList>
#include <QWidget>

class QChart;
class QChartView;
class QComboBox;
class QDateTimeAxis;
class QLabel;
class QLineSeries;
class QListWidget;
class QPushButton;
class QTimer;
class QValueAxis;

// The values a card's view showed, read after read, as texts: what the boxes held is what is
// kept. A read that got no answer is kept as a loss, and a stretch without reads (the plot was
// closed) as a break.
class TrendSamples {
public:
    enum class Kind { Values, Lost, Break };
    struct Sample {
        QDateTime time;
        Kind kind = Kind::Values;
        QStringList texts; // one a channel, in the order of names(); empty where not shown
    };

    // A read's values by channel name; a name not seen before adds a channel.
    void add(const QDateTime &time, const QList<QPair<QString, QString>> &values);
    void addMark(const QDateTime &time, Kind kind);
    // Forgets the samples before `limit`.
    void dropBefore(const QDateTime &limit);

    const QStringList &names() const { return m_names; }
    const QList<Sample> &samples() const { return m_samples; }
    // The text of channel `channel` in `sample`, empty where the channel was not shown.
    QString text(const Sample &sample, qsizetype channel) const {
        return sample.texts.value(channel);
    }

    // The samples as CSV lines: "Time" and the channels' names, then one line a sample; a loss
    // or a break has empty values and says so in the last column, "Note".
    QStringList csvLines() const;

private:
    QStringList m_names;
    QList<Sample> m_samples;
};

// The trend plot of one card (frmTrend): its live channels over time, drawn from the samples its
// view's own cyclic read showed; the plot asks nothing of the rack. Channels to pick, a span from
// one minute to an hour, a pause that holds the picture while recording goes on, and an export of
// the samples to CSV. It records from the moment it is shown until the user closes it, and keeps
// the last hour.
class FrmTrend : public QWidget {
    Q_OBJECT
public:
    FrmTrend(LiveFeed *feed, const QString &source, QWidget *parent = nullptr);

    // Follows another feed of the same card (a view made anew).
    void follow(LiveFeed *feed);
    const QString &source() const { return m_source; }
    const TrendSamples &samples() const { return m_samples; }
    // The span of the picture, in seconds.
    int spanSeconds() const;
    bool paused() const { return m_paused; }
    // The segments drawn for a channel: runs of numbers unbroken by a loss, a break, a long
    // silence or a text that is no number.
    QList<QList<QPointF>> segments(qsizetype channel) const;

    QListWidget *lstChannels;
    QComboBox *cboSpan;
    QPushButton *cmdPause;
    QPushButton *cmdExport;
    QLabel *lblStatus;
    QChartView *chartView;

public slots:
    void cmdPause_Click();
    void cmdExport_Click();
    // Redraws the picture and the status line.
    void refresh();

protected:
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void takeSample();
    void takeLoss();
    void syncChannelList();
    void drawChannel(qsizetype channel, const QDateTime &from, const QDateTime &to, double &low,
                     double &high);
    std::optional<double> numberOf(qsizetype channel, const QString &text) const;
    QString statusText() const;

    QPointer<LiveFeed> m_feed;
    QString m_source;
    TrendSamples m_samples;
    // How each channel's text reads as a number, from the view's list.
    QList<std::function<std::optional<double>(const QString &)>> m_numbers;
    QChart *m_chart;
    QDateTimeAxis *m_timeAxis;
    QValueAxis *m_valueAxis;
    QList<QList<QLineSeries *>> m_series; // a channel's segments
    QTimer *m_clock;
    bool m_paused = false;
    QDateTime m_pausedAt;
    QDateTime m_lastLoss;
    bool m_open = false;
};

// Shows the trend plot of the card `feed` works on now, made on first use for that card and kept;
// the plot window belongs to `anchor`'s window.
FrmTrend *ShowTrendPlot(LiveFeed *feed, QWidget *anchor);
// The plot of a card, if one was made.
FrmTrend *TrendPlotOf(const QString &source);
