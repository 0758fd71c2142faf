#pragma once

#include "views/common/cardview.h"

#include <QString>
#include <array>

class QLabel;
class QLineEdit;

// The monitor views of the gateway's slots: they only watch, with no Upload or Download. Their
// tick polls the live values while the view is on the screen, as every card view's does.

// frmHLINKdata: one entry of the SLMP gateway ("HLINK1(3)"), its I/O type and channel count as
// the slot tells them, and the live value of each of its channels.
class FrmHLINKdata : public CardView {
    Q_OBJECT
public:
    explicit FrmHLINKdata(QWidget *parent = nullptr);

    // The show routine with the slot's display name in the header.
    void OpenView(const QString &model) override;
    // Reads the entry's kind and channel count, then starts the cycle.
    void HLINK_Init(const QString &displayName);
    void SetScaleMinMax(const QString &displayName) override;
    // The entry number of a display name: its eighth character, or eighth and ninth for a name
    // of ten characters; 1 for any other length.
    static int EntryNumber(const QString &displayName);

    QLineEdit *cardType = nullptr;
    QLineEdit *ChNo = nullptr;
    QLineEdit *txtTitle = nullptr;
    std::array<QLineEdit *, 17> txtData{}; // 1..16
    int channelCount = 0;

protected:
    void buildBody(QVBoxLayout *layout) override;
    void procCycDataRead() override;
};

// frmHx: any other slot of the gateway family: sixteen inputs and outputs, each channel's pair
// of values in one reply, the rows numbered from the slot's place in the gateway.
class FrmHx : public CardView {
    Q_OBJECT
public:
    explicit FrmHx(QWidget *parent = nullptr);

    void SetScaleMinMax(const QString &model) override;
    // The number of the first row: (n - 1) * 16 for a name that ends in a digit n from 1 to 8,
    // else 0.
    static int LabelBase(const QString &model);

    std::array<QLabel *, 16> hexIdx{};           // 0..15
    std::array<QLineEdit *, 17> txtParInData{};  // 1..16
    std::array<QLineEdit *, 17> txtParOutData{}; // 1..16

protected:
    void buildBody(QVBoxLayout *layout) override;
    void procCycDataRead() override;
};
