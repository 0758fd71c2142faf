#pragma once

#include <QString>

// The "Save" and "Open" commands of the main window: all 17 card records to and from a
// project file. The caller refreshes its commands afterwards.
void OpenProjectFile();
void SaveProjectFile();
