#include "rack/projectfile.h"

void OpenProjectFile() {}

void SaveProjectFile() {}
