#pragma once

// Cards whose bits do not fit the overview's plain lamp row show and read their row themselves.
// The overview finds the card's view by form name and asks it through this interface.
class OverviewRowIO {
public:
    virtual ~OverviewRowIO() = default;
    // Makes the lamps or fields of the slot's overview row that this card uses visible.
    virtual void ShowChDataIO(int slot) = 0;
    // The live read of the slot's overview row, with the card already selected. False when a
    // read got no reply (the overview then ends its pass as for any discrete read).
    virtual bool setOverViewDataIO(int slot) = 0;
};
