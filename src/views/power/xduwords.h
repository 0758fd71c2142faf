#pragma once

#include <QList>
#include <QString>

// The multi-power card publishes sixteen words per slot, and the user picks what stands in each
// from the card's measurements. This is that list, in the card's own order: one row per
// measurement, with the register address the card knows it by, the unit one step of the word
// stands for, and how many words the measurement takes.

struct WordRow {
    QString name;
    int address = 0; // 40000 plus the card's register number
    QString unit;    // shown as it stands; the scale is in the unit itself ("V/100")
    int words = 2;   // 1 or 2
};

// The rows, numbered from 0. Row 0 is the empty entry at the head of every list; the addresses
// rise strictly from row to row.
const QList<WordRow> &WordTable();

// True when every run of the table starts at the row it was written for and carries a unit for
// each name: a name gained or lost in transcription shows here.
bool WordRunsInPlace();

// The register numbers are published as "40000 + n".
constexpr int kWordAddressBase = 40000;

// The first row from 1 upward whose address is not below `address`, or -1 when none is.
int FirstWordRowFrom(int address);
