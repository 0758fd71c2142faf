#pragma once

#include "views/common/cardview.h"

// The millivolt cards (QS4, QS8) and the load-cell card (QX2). None of them checks a range,
// filters keys or selects a field's text on focus: a field that is not empty goes to the card as
// typed, and an empty one is refilled from its cell.

// The millivolt cards have scales and bases but no adjusts, and show a percentage beside each
// value; the cycle reads it from group 02 without opening the group.
class FrmQS : public CardView {
    Q_OBJECT
public:
    FrmQS(const QString &form, const QString &tag, int channels, int firstBaseCell,
          const QString &percentCaption, QWidget *parent = nullptr);

    QLineEdit *percentBox(int ch) const;
    QList<LiveChannel> LiveChannels() const override;

protected:
    void procCycDataRead() override;
};

CardView *MakeFrmQS4();
CardView *MakeFrmQS8();

// The load cell has two channels with three fields of its own: tare ratio, load ratio and
// threshold adjust.
CardView *MakeFrmQX2();
