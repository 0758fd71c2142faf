#pragma once

#include "views/common/cardview.h"

#include <array>

class QLabel;
class QPushButton;

// The plain signal cards with four and eight channels: the standard view, declared as data.
CardView *MakeFrmQF4();
CardView *MakeFrmQF8();

// The sixteen-channel card shows two columns a channel and switches them between the scale
// page and the adjust page; four arrays hold the truth while the view is open.
class FrmQF16 : public CardView {
    Q_OBJECT
public:
    explicit FrmQF16(QWidget *parent = nullptr);

    bool adjustPage() const { return m_adjustPage; }
    QPushButton *changeButton = nullptr;

public slots:
    void changeButton_Click();

protected:
    void buildBody(QVBoxLayout *layout) override;
    void ViewRefresh() override;
    void ViewUpload() override;
    void ViewDownload() override;
    void procCycDataRead() override;
    bool ValidateDownload() override;
    void TakeEditsFrom(const CardView &source) override;

private:
    static constexpr int kChannels = 16;
    using Column = std::array<QString, kChannels + 1>; // 1-based
    enum Array { ScaleZero, ScaleFull, AdjustZero, AdjustFull };

    void SwitchPage(bool saving);
    static void PageKeyFilter(QLineEdit *box, int &key);

    std::array<Column, 4> m_arrays;
    bool m_adjustPage = false;
    QLabel *m_zeroHeader = nullptr;
    QLabel *m_fullHeader = nullptr;
};
