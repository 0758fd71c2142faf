#pragma once

// The rack scan: reads the model name of every slot through the comm card's slot list, stores it
// in the card table and sets up the slot's overview row. Slot 0 is selected first, and again
// after a multi-power card whose full name had to be asked of the card itself. A slot that does
// not answer ends the scan with "Uploading incomplete"; the slots read so far keep their names.
void ScanRack();
