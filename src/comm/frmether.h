#pragma once

#include "comm/commdialog.h"
#include "ui/viewregistry.h"

#include <array>

class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;

// frmEther, "Ethernet Settings": the addresses of an Ethernet comm card. Two faces by the model
// name: a name beginning "VX-ZTIP" has a default gateway and the choice of where the address
// comes from; any other has four TCP socket ports with their linger times. Opening the dialog
// reads the card; nothing is kept in the card table.
class FrmEther : public CommDialog, public OpenableView {
    Q_OBJECT
public:
    explicit FrmEther(QWidget *parent = nullptr);

    // The face of a model name.
    static bool isIpFace(const QString &model);

    // The start: the face of `model`, then an Upload.
    void OpenView(const QString &model) override;

    Comm::AddressFields txtIP;
    Comm::AddressFields txtSNM;
    Comm::AddressFields txtDGate;
    QLabel *Label10;
    QLabel *lblIPSel;
    QLineEdit *txtIPsel;
    QGroupBox *Frame1;
    std::array<QLineEdit *, 5> txtPort{};    // 1..4
    std::array<QLineEdit *, 5> txtTimeout{}; // 1..4
    std::array<QLabel *, 2> lblMac{};

    bool ipFace() const { return m_ipFace; }

public slots:
    void cmdUp_Click();
    void cmdDown_Click();

private:
    void buildForm();
    void setFace(bool ipFace);
    bool uploadCard();
    // The check of a part of an address as it is typed.
    void addressPartEdited(QLineEdit *box);

    bool m_ipFace = false;
};
