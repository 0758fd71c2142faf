#include "app/frmtrafficlog.h"

#include "app/trafficlog.h"
#include "link/clock.h"
#include "ui/people.h"
#include "ui/textfile.h"
#include "ui/widgets.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>

namespace {

const QString kTitle = QStringLiteral("Traffic Log");
// A search over a full log takes a moment: it starts once the typing pauses.
constexpr int kFindDelayMs = 250;

} // namespace

FrmTrafficLog::FrmTrafficLog(TrafficLogModel *log, QWidget *parent)
    : QWidget(parent, Qt::Window), m_log(log), m_filter(new TrafficLogFilter(log, this)) {
    setObjectName("frmTrafficLog");
    setWindowTitle(kTitle);

    auto *tools = new QHBoxLayout;
    cmdLogPause = MakeButton(this, "cmdLogPause", QStringLiteral("Pause"));
    cmdLogPause->setCheckable(true);
    cboLogSlot = new QComboBox(this);
    cboLogSlot->setObjectName("cboLogSlot");
    cboLogSlot->addItem(QStringLiteral("All slots"), TrafficLogFilter::kAllSlots);
    cboLogSlot->addItem(QStringLiteral("00 comm card"), 0);
    for (int slot = 1; slot <= 16; ++slot)
        cboLogSlot->addItem(TrafficText::slotText(slot), slot);
    txtLogFind = new QLineEdit(this);
    txtLogFind->setObjectName("txtLogFind");
    txtLogFind->setPlaceholderText(QStringLiteral("text in the line, e.g. I41 or \\r"));
    txtLogFind->setClearButtonEnabled(true);
    cmdLogCopy = MakeButton(this, "cmdLogCopy", QStringLiteral("Copy"));
    cmdLogExport = MakeButton(this, "cmdLogExport", QStringLiteral("Export..."));
    cmdLogClear = MakeButton(this, "cmdLogClear", QStringLiteral("Clear"));
    tools->addWidget(cmdLogPause);
    tools->addSpacing(8);
    tools->addWidget(MakeLabel(this, QString(), QStringLiteral("Slot")));
    tools->addWidget(cboLogSlot);
    tools->addWidget(MakeLabel(this, QString(), QStringLiteral("Find")));
    tools->addWidget(txtLogFind, 1);
    tools->addWidget(cmdLogCopy);
    tools->addWidget(cmdLogExport);
    tools->addWidget(cmdLogClear);

    tblLog = new QTableView(this);
    tblLog->setObjectName("tblLog");
    tblLog->setModel(m_filter);
    tblLog->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    tblLog->setSelectionBehavior(QAbstractItemView::SelectRows);
    tblLog->setSelectionMode(QAbstractItemView::ExtendedSelection);
    tblLog->setEditTriggers(QAbstractItemView::NoEditTriggers);
    tblLog->setVerticalScrollMode(QAbstractItemView::ScrollPerItem);
    tblLog->setWordWrap(false);
    tblLog->setShowGrid(false);
    tblLog->setAlternatingRowColors(true);
    // A hundred thousand rows of one height: no row is measured.
    QHeaderView *rows = tblLog->verticalHeader();
    rows->hide();
    rows->setSectionResizeMode(QHeaderView::Fixed);
    rows->setDefaultSectionSize(tblLog->fontMetrics().height() + 4);
    QHeaderView *columns = tblLog->horizontalHeader();
    const int digit = tblLog->fontMetrics().horizontalAdvance(QLatin1Char('0'));
    columns->resizeSection(TrafficLogModel::ColTime, 14 * digit);
    columns->resizeSection(TrafficLogModel::ColDirection, 6 * digit);
    columns->resizeSection(TrafficLogModel::ColSlot, 6 * digit);
    columns->setStretchLastSection(true);

    lblLogStatus = MakeLabel(this, "lblLogStatus", QString());
    auto *legend = MakeLabel(this, QString(),
                             QStringLiteral("> sent   < reply   ! no reply   ? no valid reply"));
    auto *foot = new QHBoxLayout;
    foot->addWidget(lblLogStatus, 1);
    foot->addWidget(legend);

    auto *column = new QVBoxLayout(this);
    column->addLayout(tools);
    column->addWidget(tblLog, 1);
    column->addLayout(foot);
    resize(780, 520);

    auto *copy = new QAction(this);
    copy->setShortcut(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    tblLog->addAction(copy);
    connect(copy, &QAction::triggered, this, &FrmTrafficLog::cmdLogCopy_Click);

    auto *findDelay = new QTimer(this);
    findDelay->setSingleShot(true);
    findDelay->setInterval(Clock::ms(kFindDelayMs));
    connect(txtLogFind, &QLineEdit::textChanged, findDelay, qOverload<>(&QTimer::start));
    connect(findDelay, &QTimer::timeout, this, [this] {
        m_filter->setTextFilter(txtLogFind->text());
        showStatus();
    });
    connect(cmdLogPause, &QPushButton::clicked, this, &FrmTrafficLog::cmdLogPause_Click);
    connect(cboLogSlot, &QComboBox::activated, this, &FrmTrafficLog::cboLogSlot_Click);
    connect(cmdLogCopy, &QPushButton::clicked, this, &FrmTrafficLog::cmdLogCopy_Click);
    connect(cmdLogExport, &QPushButton::clicked, this, &FrmTrafficLog::cmdLogExport_Click);
    connect(cmdLogClear, &QPushButton::clicked, this, &FrmTrafficLog::cmdLogClear_Click);

    // Following the newest row until the user scrolls away from it, and keeping the rows a
    // reader looks at in place while the oldest drop out of the ring.
    QScrollBar *bar = tblLog->verticalScrollBar();
    connect(bar, &QScrollBar::valueChanged, this,
            [this, bar](int value) { m_following = value >= bar->maximum(); });
    connect(m_filter, &QAbstractItemModel::rowsRemoved, this,
            [this](const QModelIndex &, int first, int last) {
                if (first == 0) keepPlace(last + 1);
            });
    connect(m_filter, &QAbstractItemModel::rowsInserted, this, [this] {
        if (m_following) tblLog->scrollToBottom();
    });
    connect(m_log, &TrafficLogModel::batchDone, this, [this] {
        if (isVisible()) showStatus();
    });
    showStatus();
}

void FrmTrafficLog::keepPlace(int removedAtTop) {
    if (m_following) return;
    QScrollBar *bar = tblLog->verticalScrollBar();
    bar->setValue(std::max(0, bar->value() - removedAtTop));
}

void FrmTrafficLog::showStatus() {
    const QLocale locale;
    QString text = QStringLiteral("%1 rows").arg(locale.toString(m_log->rowCount()));
    if (m_filter->rowCount() != m_log->rowCount())
        text += QStringLiteral(", %1 shown").arg(locale.toString(m_filter->rowCount()));
    if (m_log->isPaused())
        text += QStringLiteral("; paused, %1 new rows held").arg(locale.toString(m_log->held()));
    text += QStringLiteral("; the last %1 are kept").arg(locale.toString(m_log->capacity()));
    lblLogStatus->setText(text);
}

void FrmTrafficLog::cmdLogPause_Click() {
    m_log->setPaused(cmdLogPause->isChecked());
    cmdLogPause->setText(m_log->isPaused() ? QStringLiteral("Resume") : QStringLiteral("Pause"));
    showStatus();
}

void FrmTrafficLog::cboLogSlot_Click() {
    m_filter->setSlotFilter(cboLogSlot->currentData().toInt());
    showStatus();
}

void FrmTrafficLog::cmdLogCopy_Click() {
    QList<int> rows;
    for (const QModelIndex &index : tblLog->selectionModel()->selectedRows())
        rows << index.row();
    if (rows.isEmpty()) return;
    std::sort(rows.begin(), rows.end());
    const QStringList lines = m_filter->lines(TrafficLogFilter::Format::Plain, rows);
    QApplication::clipboard()->setText(lines.join(QLatin1Char('\n')) + QLatin1Char('\n'));
}

// The rows shown go out: the whole log when nothing filters it. A name ending in .csv gets
// CSV, anything else the plain text that vxrack-sim --from-log replays.
void FrmTrafficLog::cmdLogExport_Click() {
    People::FileRequest request;
    request.save = true;
    request.title = QStringLiteral("Export the traffic log");
    request.filter = QStringLiteral("Traffic log (*.txt);;CSV (*.csv);;All files (*)");
    request.defaultName = QStringLiteral("traffic.txt");
    const QString path = People::chooseFile(request);
    if (path.isEmpty()) return;
    const bool csv = path.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive);
    m_log->flush();
    const QStringList lines =
        m_filter->lines(csv ? TrafficLogFilter::Format::Csv : TrafficLogFilter::Format::Plain);
    const QString error = TextFile::writeLines(path, lines);
    if (!error.isEmpty())
        People::message(QStringLiteral("%1\n\n%2").arg(QDir::toNativeSeparators(path), error),
                        kTitle, People::Icon::Exclamation);
}

void FrmTrafficLog::cmdLogClear_Click() {
    m_log->clear();
    showStatus();
}

FrmTrafficLog *ShowTrafficLog(TrafficLogModel *log, QWidget *owner) {
    auto *window = owner->findChild<FrmTrafficLog *>(QString(), Qt::FindDirectChildrenOnly);
    if (!window) window = new FrmTrafficLog(log, owner);
    window->show();
    window->raise();
    window->activateWindow();
    return window;
}
