#pragma once

#include <QWidget>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableView;
class TrafficLogFilter;
class TrafficLogModel;

// The traffic log window: a window of its own beside the main window, made on first use and
// hidden when closed. It only watches: nothing it does reaches the line.
class FrmTrafficLog : public QWidget {
    Q_OBJECT
public:
    explicit FrmTrafficLog(TrafficLogModel *log, QWidget *parent = nullptr);

    QPushButton *cmdLogPause;
    QComboBox *cboLogSlot;
    QLineEdit *txtLogFind;
    QPushButton *cmdLogCopy;
    QPushButton *cmdLogExport;
    QPushButton *cmdLogClear;
    QTableView *tblLog;
    QLabel *lblLogStatus;

    TrafficLogFilter *filter() const { return m_filter; }

public slots:
    void cmdLogPause_Click();
    void cboLogSlot_Click();
    void cmdLogCopy_Click();
    void cmdLogExport_Click();
    void cmdLogClear_Click();

private:
    void showStatus();
    void keepPlace(int removedAtTop);

    TrafficLogModel *m_log;
    TrafficLogFilter *m_filter;
    bool m_following = true;
};

// Shows the log window of `log`, making it on first use, and brings it to the front.
FrmTrafficLog *ShowTrafficLog(TrafficLogModel *log, QWidget *owner);
