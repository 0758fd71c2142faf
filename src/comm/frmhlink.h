#pragma once

#include "comm/commdialog.h"
#include "comm/hlinkfile.h"
#include "ui/viewregistry.h"

#include <QList>
#include <QString>
#include <array>
#include <optional>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

// frmHLINK, "HLINK Settings": the SLMP gateway comm card "HLINK1", a client of an SLMP server
// that shows the server's devices to the rack as up to sixteen virtual I/O cards, the entries.
// The dialog edits the card's IP settings, its SLMP client settings and the entry table, moves
// them to and from the card, and keeps them in a ".hlk" file.
class FrmHLINK : public CommDialog, public OpenableView {
    Q_OBJECT
public:
    static constexpr int kRows = HlinkFile::kRows;

    // A device of the SLMP server: its name, its two-digit code on the wire and the radix of
    // its addresses ("10" or "16").
    struct Device {
        QString name;
        QString code;
        QString radix;
    };
    // The devices of list kind 1 (words, 32-bit protocol), 2 (words, 16-bit), 3 (bits, 32-bit)
    // or 4 (bits, 16-bit); none for any other kind.
    static const QList<Device> &DeviceTable(int listKind);
    // The list kind of an I/O type ("AI", "AO", "DI", "DO") under a protocol type ("16", "32");
    // 0 when either is something else, and the row's list then stays as it is.
    static int ListKindFor(const QString &ioType, const QString &serverType);

    explicit FrmHLINK(QWidget *parent = nullptr);

    // The start: everything blank, then an Upload.
    void OpenView(const QString &model) override;
    void Upload_First_File();

    // One entry of the table, with what the dialog keeps beside its controls.
    struct EntryRow {
        QComboBox *cardType = nullptr;
        QLineEdit *ChNo = nullptr;
        QComboBox *DevType = nullptr; // shows "0" for a device code no table has
        QLineEdit *DevAdd16 = nullptr;
        QLineEdit *DevAdd10 = nullptr;
        std::optional<QString> rowDeviceCode; // nothing: never chosen
        std::optional<QString> rowRadix;
        int rowListKind = 0; // 0: no list filled yet
    };

    QLineEdit *pausePeriod;
    Comm::AddressFields txtIP;
    Comm::AddressFields txtSNM;
    Comm::AddressFields txtDGate;
    Comm::AddressFields txtSLMPIP;
    QComboBox *List_ServerType;
    QLineEdit *CPUNo;
    QLineEdit *TimeOut;
    QLineEdit *NWNo;
    QLineEdit *StationNo;
    QLineEdit *PortNo;
    QLineEdit *DeviceNo;
    std::array<QLabel *, 2> lblMac{};
    std::array<EntryRow, kRows> rows;
    QPushButton *CmdOK;
    QPushButton *CmdReadF;
    QPushButton *CmdSaveF;
    int settingsFileVersion = 0;

    // The entries in use: DeviceNo when it is a count from 0 to 16, else none.
    int ActiveRows() const;
    // Applies a list kind to a row: its device list refilled, the first device chosen. Nothing
    // happens when the kind is 0 or already in force.
    void ApplyListKind(int row, int kind);
    // Rows below `count` open, with the address box of their radix; the others closed.
    void SetRowEnabling(int count);
    // An entry text of the card ("A8,100,AI8") into the row; false when it is none.
    bool ParseEntry(int row, const QString &text);

public slots:
    void cmdUp_Click();
    void cmdDown_Click();
    // Checks the settings and applies the protocol type to the entries; true when all passed.
    bool CmdOK_Click();
    void CmdReadF_Click();
    void CmdSaveF_Click();

private:
    void buildForm();
    QWidget *buildSettings();
    QWidget *buildEntries();
    void installChecks();
    void initialise();
    bool uploadCard();
    bool downloadCard();
    bool rowsComplete() const;
    // The entry text of a row, checked on the way; empty after a failed check.
    QString entryText(int row) const;
    void setAddressBoxes(int row, const QString &radix);
    void selectDevice(int row, int position);
    void showDevice(int row, const QString &name);
    void setRowType(int row, const QString &type);
    HlinkFile::Settings settingsOfControls() const;
    void applySettings(const HlinkFile::Settings &settings);

    // The checks of the fields: the message on failure.
    bool checkPausePeriod();
    bool checkAddress(const Comm::AddressFields &address);
    bool checkServerType();
    bool checkCPUNo();
    bool checkTimeOut();
    bool checkNWNo();
    bool checkStationNo();
    bool checkPortNo();
    bool checkDeviceNo();
    bool checkChNo(int row);
    bool checkDevAdd16(int row);
    bool checkDevAdd10(int row);

    // So that a file opened from a Windows PC is saved back in its own encoding.
    TextFile::KnownEncodings m_openedFiles;
};
