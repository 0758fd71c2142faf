#pragma once

// Shows frmSWcheck modally: the DIP switches of all I/O cards, read from the rack.
void ShowSWcheck();
