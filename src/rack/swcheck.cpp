#include "rack/swcheck.h"

void ShowSWcheck() {}
