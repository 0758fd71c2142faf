#pragma once

#include "views/common/cardview.h"

// The current transformer cards. Each channel has the standard four fields and two base fields,
// the input values that zero and full scale stand for. Nothing is checked before a Download
// and no key is filtered; a field that is not empty goes to the card as typed.

// Four channels (QL4, QM4, QN4). The model decides the items of the base fields, and a QM card
// has none at all.
class FrmQL4 : public CardView {
    Q_OBJECT
public:
    explicit FrmQL4(QWidget *parent = nullptr);
    void SetScaleMinMax(const QString &model) override;

protected:
    QList<PassSpec> workerPasses() const override;
    void ViewRefresh() override;
    void ViewUpload() override;
    void ViewDownload() override;

private:
    // The model as the header frame shows it: every worker decides by it.
    bool hasNoBase() const;
    void EmptyBases(bool cellsToo);
};

// Eight channels (QL8): another cell layout, and group 01 opened twice in a worker.
CardView *MakeFrmQL8();
