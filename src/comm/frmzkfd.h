#pragma once

#include "comm/commdialog.h"
#include "ui/viewregistry.h"

class QLineEdit;
class QPushButton;

// frmZKFD, "CC-LinkIE Setting": the network number of a CC-Link IE comm card and, on the
// "VX-ZKFD1W", the delay of the switch between main and sub; station, MAC address and link state
// as the card reports them. Everything lies in group "50". Record 17 keeps the last valid network
// number in Param(20) and the delay in Param(21); what it keeps outranks what the card says at
// opening.
class FrmZKFD : public CommDialog, public OpenableView {
    Q_OBJECT
public:
    explicit FrmZKFD(QWidget *parent = nullptr);

    // The start: the presets, an Upload, then the record's values over the card's.
    void OpenView(const QString &model) override;
    void Upload_First_File();

    // The checks of the two boxes: true and the text kept in the record, or the message.
    bool CheckNetworkNo();
    bool CheckSwitchDelay();

    QLineEdit *txbNetWorkNo;
    QLineEdit *txbStationID;
    QLineEdit *txbMACAdd;
    QLineEdit *txbLinkStatus;
    QLineEdit *txbRedundant;

public slots:
    void cmdUp_Click();
    void cmdDown_Click();

private:
    void buildForm();
};
