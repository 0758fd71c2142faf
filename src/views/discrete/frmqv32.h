#pragma once

#include "views/common/cardview.h"

// The BCD card: two live words and three logic settings, each "1" or "0".
class FrmQV32 : public CardView {
    Q_OBJECT
public:
    explicit FrmQV32(QWidget *parent = nullptr);

    QLineEdit *txtParData01 = nullptr;
    QLineEdit *txtParData02 = nullptr;

protected:
    void buildBody(QVBoxLayout *layout) override;
    void procCycDataRead() override;
};
