#pragma once

#include "ui/textfile.h"

#include <QDialog>
#include <QPlainTextEdit>
#include <QStringList>
#include <array>

class QComboBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;

// A text box for a long hexadecimal setting: it wraps anywhere and takes "0"-"9" and "A"-"F"
// only, typed or pasted.
class HexEdit : public QPlainTextEdit {
    Q_OBJECT
public:
    explicit HexEdit(QWidget *parent = nullptr);
    QString text() const { return toPlainText(); }
    void setText(const QString &text);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    bool canInsertFromMimeData(const QMimeData *source) const override;
    void insertFromMimeData(const QMimeData *source) override;
};

// The HART master settings of the four channels of a HART input card, one channel at a time:
// polling, retries and master mode as items; the code lists, automatic commands and constant
// data in hexadecimal blocks that travel through a read/write request inside the data of an
// exchange. One channel's settings can be kept in a ".vhx" file.
class FrmXG_HART : public QDialog {
    Q_OBJECT
public:
    explicit FrmXG_HART(QWidget *parent = nullptr);

    // Opens on channel index 0 to 3 with every channel's settings empty.
    void XG4_HART_Init(int channelIndex);
    void Init();
    void Disp();
    void SetpgBar_Local(int maximum);

    // The ten settings of a channel, in the order of the file.
    static constexpr int kSettings = 10;
    static constexpr int kChannels = 4;
    int currentHartChannel = 0;

    QLabel *HARTCh_No;
    QLineEdit *PollAdd;
    QLineEdit *CYCL_HIGH;
    QLineEdit *CYCL_LOW;
    QLineEdit *Retry;
    QComboBox *List_MasterMode;
    HexEdit *DeviceVariableCode;
    HexEdit *AnalogChCode;
    HexEdit *AutoCmmand;
    HexEdit *DeviceSpecificCommand;
    HexEdit *ConstantData;
    QPushButton *CmdUpload;
    QPushButton *CmdDownload;
    QPushButton *CmdReadFile;
    QPushButton *CmdWriteFile;
    QPushButton *cmdExit;
    QPushButton *CmdDownCh;
    QPushButton *CmdUpCh;
    QPushButton *CmdReset;
    std::array<QPushButton *, 5> CmdClear{};
    QProgressBar *ProgressBar;

public slots:
    void CmdUpload_Click();
    void CmdDownload_Click();
    void CmdReadFile_Click();
    void CmdWriteFile_Click();
    void cmdExit_Click();
    void CmdDownCh_Click();
    void CmdUpCh_Click();
    void CmdReset_Click();
    void CmdClear_Click(int index);
    void reject() override;

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    QWidget *buildSettings();
    QWidget *buildBlocks();
    QWidget *buildCommands();
    void installChecks();

    QString group() const { return QString::number(currentHartChannel + 1); }
    QString &stored(int setting) {
        return m_store[static_cast<size_t>(currentHartChannel)][static_cast<size_t>(setting)];
    }
    void SetButtons(bool enabled);
    void OpenChannel(bool selectCommCard);
    void ReadBlocks(int field);
    void WriteBlocks(int field);
    void HideProgress();

    std::array<std::array<QString, kSettings>, kChannels> m_store;
    std::array<HexEdit *, 5> m_blocks{};
    std::array<QLineEdit *, 4> m_short{};
    bool m_busy = false;
    // So that a file opened from a Windows PC is saved back in its own encoding.
    TextFile::KnownEncodings m_openedFiles;
};

// One attempt of a block exchange, and the exchange with its retries: G, I and D steps of their
// own, the data reply without its letter as the result, the empty text on a refusal or silence.
QString BlockExchangeOnce(const QString &group, const QString &item, const QString &data);
QString BlockExchange(int retries, const QString &group, const QString &item, const QString &data);
