#pragma once

#include <QString>
#include <array>

// One card's record: its model name, version and parameters, all as the wire and the fields have
// them. Param and ChParam count from 1, as the cards' item maps do.
struct CardRecord {
    static constexpr int kParams = 64;
    static constexpr int kChParams = 16;

    QString CardName;
    QString VerNo;
    QString FileCardName;

    QString &Param(int k) { return m_param.at(static_cast<size_t>(k - 1)); }
    const QString &Param(int k) const { return m_param.at(static_cast<size_t>(k - 1)); }
    QString &ChParam(int ch) { return m_chParam.at(static_cast<size_t>(ch - 1)); }
    const QString &ChParam(int ch) const { return m_chParam.at(static_cast<size_t>(ch - 1)); }

private:
    std::array<QString, kParams> m_param;
    std::array<QString, kChParams> m_chParam;
};

// Records 1 to 16 are the slots, record 17 the communication card.
constexpr int kSlots = 16;
constexpr int kCommRecord = 17;
constexpr int kRecords = 17;

// The record of slot `n` (1..17). Out-of-range numbers are a programming error and throw.
CardRecord &CardTable(int n);

// Empties names, file names and parameters of all 17 records; versions stay.
void ClearCardTable();

// True for the two words that stand for an empty slot.
bool IsEmptySlotName(const QString &name);

// Module-wide values of the program, with their start values.
inline int CardNo = 0;
inline int ComPortNo = 1;
inline QString ComSpeed = QStringLiteral("1200");
inline QString SelFormName = QStringLiteral("Over");
inline QString PrevFormName;
inline bool CardSelectLock = true;
inline bool IsConnected = false;
inline bool IsMonitoring = false;
inline bool CardSelFocus = false;
inline QString CommCardName;
inline bool IsMasterComm = false;
inline bool FileLoaded = false;

// Puts the card table (versions too) and every module value back to its start value.
void ResetModuleData();
