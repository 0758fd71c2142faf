#include "rack/cardtable.h"

namespace {
std::array<CardRecord, kRecords> g_table;
}

CardRecord &CardTable(int n) { return g_table.at(static_cast<size_t>(n - 1)); }

void ClearCardTable() {
    for (CardRecord &record : g_table) {
        const QString version = record.VerNo;
        record = CardRecord();
        record.VerNo = version;
    }
}

bool IsEmptySlotName(const QString &name) {
    return name == QLatin1String("NONE") || name == QLatin1String("UNKNOWN");
}

void ResetModuleData() {
    g_table.fill(CardRecord());
    CardNo = 0;
    ComPortNo = 1;
    ComSpeed = QStringLiteral("1200");
    SelFormName = QStringLiteral("Over");
    PrevFormName.clear();
    CardSelectLock = true;
    IsConnected = false;
    IsMonitoring = false;
    CardSelFocus = false;
    CommCardName.clear();
    IsMasterComm = false;
    FileLoaded = false;
}
