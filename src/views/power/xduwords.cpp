#include "views/power/xduwords.h"

#include <algorithm>
#include <initializer_list>

namespace {

// A run of measurements at consecutive registers, each `words` apart. One unit serves the whole
// run, or there is one unit for each name. `suffix` follows every name of the run (" 1").
struct WordRun {
    int firstRow;
    int firstRegister;
    int words;
    std::initializer_list<const char *> units;
    std::initializer_list<const char *> names;
    const char *suffix = "";
};

// clang-format off
const WordRun kRuns[] = {
    {1, 1, 2, {"mA", "V/100", "W", "var", "VA", "%/100", "Hz/100", ""},
     {"I", "U", "P", "Q", "S", "PF", "F", "DIR"}},
    {9, 33, 2, {"mA"}, {"I1", "I2", "I3", "IN"}},
    {13, 41, 2, {"V/100"}, {"U12", "U23", "U31", "U1N", "U2N", "U3N"}},
    {19, 53, 2, {"W"}, {"P1", "P2", "P3"}},
    {22, 59, 2, {"var"}, {"Q1", "Q2", "Q3"}},
    {25, 65, 2, {"VA"}, {"S1", "S2", "S3"}},
    {28, 71, 2, {"%/100"}, {"PF1", "PF2", "PF3"}},
    {31, 77, 2, {""}, {"DIR1", "DIR2", "DIR3"}},
    {34, 129, 2,
     {"kWh/10", "kvarh/10", "kVAh/10", "kWh/10", "kvarh/10", "kvarh/10", "kvarh/10", "kvarh/10",
      "kvarh/10", "hour/10"},
     {"EP", "EQ", "ES", "EP-", "EQ-", "EQ+LAG", "EQ+LEAD", "EQ-LAG", "EQ-LEAD", "TIMER"}},
    {44, 257, 2, {"mA"}, {"I AVG", "I1 AVG", "I2 AVG", "I3 AVG", "IN AVG"}},
    {49, 273, 2, {"mA"}, {"I AVG", "I1 AVG", "I2 AVG", "I3 AVG", "IN AVG"}, " 1"},
    {54, 289, 2, {"mA"}, {"I AVG", "I1 AVG", "I2 AVG", "I3 AVG", "IN AVG"}, " 2"},
    {59, 305, 2, {"mA"}, {"I AVG", "I1 AVG", "I2 AVG", "I3 AVG", "IN AVG"}, " 3"},
    {64, 321, 2, {"mA"}, {"I AVG", "I1 AVG", "I2 AVG", "I3 AVG", "IN AVG"}, " 4"},
    {69, 513, 2, {"W", "var", "VA"}, {"P AVG", "Q AVG", "S AVG"}},
    {72, 529, 2, {"W", "var", "VA"}, {"P AVG", "Q AVG", "S AVG"}, " 1"},
    {75, 545, 2, {"W", "var", "VA"}, {"P AVG", "Q AVG", "S AVG"}, " 2"},
    {78, 561, 2, {"W", "var", "VA"}, {"P AVG", "Q AVG", "S AVG"}, " 3"},
    {81, 577, 2, {"W", "var", "VA"}, {"P AVG", "Q AVG", "S AVG"}, " 4"},
    {84, 769, 2, {"mA", "V/100", "W", "var", "VA", "%/100", "Hz/100"},
     {"I MAX", "U MAX", "P MAX", "Q MAX", "S MAX", "PF MAX", "F MAX"}},
    {91, 801, 2, {"mA"}, {"I1 MAX", "I2 MAX", "I3 MAX", "IN MAX"}},
    {95, 809, 2, {"V/100"}, {"U12 MAX", "U23 MAX", "U31 MAX", "U1N MAX", "U2N MAX", "U3N MAX"}},
    {101, 821, 2, {"W"}, {"P1 MAX", "P2 MAX", "P3 MAX"}},
    {104, 827, 2, {"var"}, {"Q1 MAX", "Q2 MAX", "Q3 MAX"}},
    {107, 833, 2, {"VA"}, {"S1 MAX", "S2 MAX", "S3 MAX"}},
    {110, 839, 2, {"%/100"}, {"PF1 MAX", "PF2 MAX", "PF3 MAX"}},
    {113, 865, 2, {"%/10"},
     {"THD I1 MAX", "THD I2 MAX", "THD I3 MAX", "THD IN MAX", "THD U12 MAX", "THD U23 MAX",
      "THD U31 MAX", "THD U1N MAX", "THD U2N MAX", "THD U3N MAX"}},
    {123, 897, 2, {"mA"}, {"I MAX AVG", "I1 MAX AVG", "I2 MAX AVG", "I3 MAX AVG", "IN MAX AVG"}},
    {128, 907, 2, {"W"}, {"P MAX AVG+", "P MAX AVG-"}},
    {130, 911, 2, {"var"}, {"Q MAX AVG+", "Q MAX AVG-"}},
    {132, 915, 2, {"VA"}, {"S MAX AVG"}},
    {133, 929, 2, {"mA", "V/100", "W", "var", "VA", "%/100", "Hz/100"},
     {"I MIN", "U MIN", "P MIN", "Q MIN", "S MIN", "PF MIN", "F MIN"}},
    {140, 961, 2, {"mA"}, {"I1 MIN", "I2 MIN", "I3 MIN", "IN MIN"}},
    {144, 969, 2, {"V/100"}, {"U12 MIN", "U23 MIN", "U31 MIN", "U1N MIN", "U2N MIN", "U3N MIN"}},
    {150, 981, 2, {"W"}, {"P1 MIN", "P2 MIN", "P3 MIN"}},
    {153, 987, 2, {"var"}, {"Q1 MIN", "Q2 MIN", "Q3 MIN"}},
    {156, 993, 2, {"VA"}, {"S1 MIN", "S2 MIN", "S3 MIN"}},
    {159, 999, 2, {"%/100"}, {"PF1 MIN", "PF2 MIN", "PF3 MIN"}},
    {162, 1281, 2, {"%/10"},
     {"THD I1", "THD I2", "THD I3", "THD IN", "THD U12", "THD U23", "THD U31", "THD U1N",
      "THD U2N", "THD U3N"}},
};

// The harmonic content of ten signals, orders 2 to 31, one word each at base + order - 2.
struct HarmonicBlock {
    int firstRow;
    const char *signal;
    int base;
};
const HarmonicBlock kHarmonics[] = {
    {172, "I1", 1537},  {202, "I2", 1601},  {232, "I3", 1665},  {262, "IN", 1729},
    {292, "U12", 1793}, {322, "U23", 1857}, {352, "U31", 1921}, {382, "U1N", 1985},
    {412, "U2N", 2049}, {442, "U3N", 2113},
};
// clang-format on
constexpr int kLowestOrder = 2;
constexpr int kHighestOrder = 31;

// A run that does not begin at the row it is written for has gained or lost a name.
bool g_runsInPlace = true;

void checkPlace(const QList<WordRow> &rows, int firstRow) {
    if (rows.size() != firstRow) g_runsInPlace = false;
}

QList<WordRow> buildTable() {
    QList<WordRow> rows;
    rows.append({QStringLiteral(" "), kWordAddressBase, QStringLiteral(" "), 2});
    for (const WordRun &run : kRuns) {
        checkPlace(rows, run.firstRow);
        // One unit for all, or one for each name: anything else is a slip of the pen.
        if (run.units.size() != 1 && run.units.size() != run.names.size()) g_runsInPlace = false;
        const auto *unit = run.units.begin();
        int reg = run.firstRegister;
        for (const char *name : run.names) {
            rows.append({QLatin1String(name) + QLatin1String(run.suffix), kWordAddressBase + reg,
                         QLatin1String(*unit), run.words});
            reg += run.words;
            if (unit + 1 != run.units.end()) ++unit;
        }
    }
    for (const HarmonicBlock &block : kHarmonics) {
        checkPlace(rows, block.firstRow);
        for (int order = kLowestOrder; order <= kHighestOrder; ++order)
            rows.append({QStringLiteral("HD %1 %2").arg(QLatin1String(block.signal)).arg(order),
                         kWordAddressBase + block.base + order - kLowestOrder,
                         QStringLiteral("%/10"), 1});
    }
    return rows;
}

} // namespace

const QList<WordRow> &WordTable() {
    static const QList<WordRow> rows = buildTable();
    return rows;
}

bool WordRunsInPlace() {
    WordTable();
    return g_runsInPlace;
}

int FirstWordRowFrom(int address) {
    const QList<WordRow> &rows = WordTable();
    const auto found = std::lower_bound(rows.begin() + 1, rows.end(), address,
                                        [](const WordRow &row, int a) { return row.address < a; });
    return found == rows.end() ? -1 : static_cast<int>(found - rows.begin());
}
