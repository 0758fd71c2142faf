#pragma once

// Registers the factory of every view and comm card dialog the program has. Each family adds its
// line to allviews.cpp; the program and the tests call this once before opening views.
void RegisterAllViews();
