#pragma once

#include "comm/commdialog.h"
#include "comm/wirelessfile.h"
#include "ui/viewregistry.h"

#include <QString>
#include <QStringList>

class QComboBox;
class QGridLayout;
class QLineEdit;
class QPushButton;

// The wireless comm cards: "ZQ1" (frmZQ), "ZRV" (frmZRV) and "ZRV1F" (frmZRV1F). One dialog for
// all three: a PAN ID, short addresses, up to ten radio channels, a fixed route and detour, a
// 32-digit encryption key and a Modbus side, with what differs between the models (and between
// firmware versions of one model) kept as data. The dialog reads the card when it opens, writes
// it back on Download and keeps its settings in a file of the model's own format.
enum class WirelessModel { ZQ, ZRV, ZRV1F };

// What a card's version allows: the feature level decides the extra items and the fourth
// network size; the file version is what Save File writes on line 1.
struct WirelessLevels {
    int firmwareFeatureLevel = 0;
    int cardFileVersion = 0;
};
// The levels of a model at the value of its version reply ("3.00"); an empty value is level 0
// and file version 0, whatever the model.
WirelessLevels LevelsOfVersion(WirelessModel model, const QString &version);

class FrmWireless : public CommDialog, public OpenableView {
    Q_OBJECT
public:
    // The text `wirPassword` shows while it does not have the focus.
    static inline const QString kMask = QString(32, QLatin1Char('*'));

    explicit FrmWireless(WirelessModel model, QWidget *parent = nullptr);
    ~FrmWireless() override;

    WirelessModel model() const { return m_model; }

    // The start: everything back to its first state, the version read (where the model has
    // one), then an Upload.
    void OpenView(const QString &model) override;
    void Upload_First_File();

    // The controls by name: a text box (or the read-only MAC address) and a list.
    QLineEdit *box(const QString &control) const;
    QComboBox *list(const QString &control) const;

    // Whether the card's level has "Slave or Relay" (item "55") and the extra items "26" to
    // "29" with the fourth network size.
    bool modeOffered() const;
    bool extrasOffered() const;

    QString encryptionKey;
    int firmwareFeatureLevel = 0;
    int cardFileVersion = 0;
    QPushButton *CmdReadF = nullptr;
    QPushButton *CmdSaveF = nullptr;

public slots:
    void cmdUp_Click();
    void cmdDown_Click();
    void CmdReadF_Click();
    void CmdSaveF_Click();
    // What the lists decide for the controls that depend on them.
    void ApplyDependencies();

private:
    struct Field;
    void buildForm();
    QWidget *buildModbus();
    QWidget *buildChannels();
    QWidget *buildWireless();
    void addRow(QGridLayout *grid, const QString &control);
    void installBehaviour();

    const Field *field(const QString &control) const;
    QStringList order(const QStringList &controls) const;
    bool offered(const Field &f) const;
    void initialise();
    void readLevels();
    bool uploadCard();
    bool downloadCard();
    bool channelGiven() const;
    void place(const Field &f, const QString &value);
    QString wireValue(const Field &f) const;
    // The check of a field's text; the message on failure.
    bool check(const Field &f, const QString &text) const;
    bool checkBeforeWrite(const Field &f);
    void showKey();
    // The file's values of the dialog's controls, and back.
    WirelessFile::Settings settingsOfControls() const;
    QString refusal(const WirelessFile::Settings &settings) const;
    void applySettings(const WirelessFile::Settings &settings);
    QString captionOf(const QString &control) const;

    WirelessModel m_model;
    QList<Field> m_fields;
    bool m_keyShown = false;
    // So that a file opened from a Windows PC is saved back in its own encoding.
    TextFile::KnownEncodings m_openedFiles;
};

QWidget *MakeFrmZRV();
QWidget *MakeFrmZRV1F();
QWidget *MakeFrmZQ();
