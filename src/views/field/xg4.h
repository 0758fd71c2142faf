#pragma once

#include "views/common/cardview.h"

#include <array>

class QComboBox;
class FrmXG_HART;

// The HART input card: four 4-20 mA channels, each in a group of its own (the channel number),
// with scales, adjusts, an "Unused" list and a button that opens the HART master settings of
// that channel. The cycle rests while those settings are open.
class FrmXG4 : public CardView {
    Q_OBJECT
public:
    explicit FrmXG4(QWidget *parent = nullptr);

    void OpenView(const QString &model) override;
    void SetScaleMinMax(const QString &model) override;
    void XG4_Init(const QString &model);

    static constexpr int kChannels = 4;
    std::array<QComboBox *, kChannels + 1> List_ChEnable{}; // 1-based
    std::array<QPushButton *, kChannels> SetHART{};

public slots:
    void SetHART_Click(int index);

protected:
    void buildBody(QVBoxLayout *layout) override;
    void ViewUpload() override;
    void ViewDownload() override;
    void ViewRefresh() override;
    bool KeepTicking() const override;
    QString CellName(Cell kind, int index) const override;

private:
    QWidget *buildChannel(int ch);
    FrmXG_HART *hartDialog() const;
    void HartClosed();
    void ShowUnused(int ch, const QString &value);
    void ColourUnused(int ch);
    void OpenChannelGroup(int ch);

    bool m_opening = false;
};
