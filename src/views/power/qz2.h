#pragma once

#include "views/power/pulse.h"

// The dual pulse counter: two channels with two alarms each on speed and position, four live
// words a channel and two lamps from its status word.
class FrmQZ2 : public PulseView {
    Q_OBJECT
public:
    explicit FrmQZ2(QWidget *parent = nullptr);

    // Lamp `k` (1 or 2) of channel `e`.
    QWidget *lamp(int e, int k) const;

protected:
    void buildBody(QVBoxLayout *layout) override;
    void procCycDataRead() override;
    void ViewClear() override { ClearByItem9(); }

private:
    bool showStatus(int e);
};
