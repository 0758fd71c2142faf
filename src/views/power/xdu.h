#pragma once

#include "views/common/cardview.h"

#include <QChar>
#include <QStringList>
#include <array>

class QComboBox;
class QGroupBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;

// The multi-power card measures one or two three-phase systems and publishes sixteen words of
// its choice. Its view has two halves: the measuring configuration (groups 03 and 04 of the
// card) and the word map, sixteen rows that bind a measurement to each word (group 02), with the
// live words below them (group 01).
class FrmXDU : public CardView {
    Q_OBJECT
public:
    static constexpr int kRows = 16;
    static constexpr int kSystems = 2;

    explicit FrmXDU(QWidget *parent = nullptr);

    void OpenView(const QString &model) override;
    void SetScaleMinMax(const QString &model) override;

    // One binding text into the controls of word row `row`.
    void setChSetting(int row, const QString &text);
    // The sixteen binding texts into the rows, in order.
    void setBinding();
    // The rows back into the sixteen binding texts.
    void setBindInfo();
    const QStringList &bindings() const { return m_bind; }
    // The measured value of each word row, named by the row and its measurement; none while
    // the live words are not read.
    QList<LiveChannel> LiveChannels() const override;

    // -1 while the live words are read; opening a word's list stops the reading by storing its
    // row here, until the next Upload or Download.
    qint16 CycleReadOn = -1;
    bool ResetPending = false;

    // The word rows.
    std::array<QLabel *, kRows> hexIdx{};
    std::array<QLineEdit *, kRows> txtParData{};
    std::array<QComboBox *, kRows> cbItem{};
    std::array<QComboBox *, kRows> cbWordNum{};
    std::array<QComboBox *, kRows> cbScale{};
    std::array<QComboBox *, kRows> cbCh{};
    std::array<QLineEdit *, kRows> txtValue{};
    std::array<QLineEdit *, kRows> txtUnit{};

    // The configuration; arrays hold the rows "#1" and "#2".
    QComboBox *cbWiring = nullptr;
    QLineEdit *txtVT1 = nullptr;
    QLineEdit *txtVT2 = nullptr;
    std::array<QLineEdit *, kSystems> txtCur1{};
    std::array<QLineEdit *, kSystems> txtCur2{};
    std::array<QComboBox *, kSystems> cbPsna{};
    std::array<QLineEdit *, kSystems> txtVCut{};
    std::array<QLineEdit *, kSystems> txtICut{};
    std::array<QComboBox *, kSystems> cbInpSig{};
    std::array<QLabel *, kSystems> lblPsna{};
    std::array<QLabel *, kSystems> lblCutout{};
    std::array<QLabel *, kSystems> lblInpSig{};
    std::array<QLabel *, kSystems> lblCur1{};
    std::array<QLabel *, kSystems> lblCur2{};
    QComboBox *cbPF = nullptr;
    QComboBox *cbQ = nullptr;
    QComboBox *cbS = nullptr;
    QLineEdit *txtIIT = nullptr;
    QLineEdit *txtVLTIT = nullptr;
    QComboBox *cbResetVal = nullptr;
    QPushButton *CmdReset = nullptr;

public slots:
    void CmdReset_Click();

protected:
    void buildBody(QVBoxLayout *layout) override;
    void ViewTick() override;
    void ViewUpload() override;
    void ViewDownload() override;
    void procCycDataRead() override;
    // The view initialisation: lists, labels and fields from the card record.
    void ViewRefresh() override;
    QString CellName(Cell kind, int index) const override;

private:
    // What the model text says about the card.
    struct Model {
        bool twoSystems = false;
        QChar series;
        int page = 0;
    };

    QWidget *buildWordTable();
    void buildConfiguration(QHBoxLayout *top, QVBoxLayout *side);
    void connectRow(int row);

    // Word rows.
    bool hasMeasurement(int row) const;
    void showRowFields(int row, bool visible);
    void blankRow(int row);
    void clearRow(int row);
    void rebuild();
    void cbItem_Click(int row, int index);
    void cbWordNum_Click(int row, int index);
    // Live words; false when the line failed (already dealt with).
    bool readWord(int row, QString &word);
    void markReading(int row, bool reading);
    void LinkLost();

    // Configuration.
    QWidget *control(int field, int system) const;
    QString controlText(int field, int system) const;
    void setControlText(int field, int system, const QString &text);
    QString &cell(int field, int system) const;
    void readField(int field, int system);
    void sendField(int field, int system, bool alsoSecondGroup = false);
    void keepField(int field, int system);
    void applySensor(int system, bool writeRating);
    void cbPsna_Click(int system);
    void applyEditState();
    void setWorking(bool working);
    void beginWorker(int steps, const QString &text);
    void endWorker();
    void secondRowToOneSystem(bool toRecord);
    bool seriesWithFreeRating() const;
    int systems() const { return m_model.twoSystems ? 2 : 1; }
    bool configEditable() const { return m_model.page <= 1; }

    Model m_model;
    QStringList m_bind;
    bool m_rebuilding = false;
    std::array<int, kRows> m_shownWordIndex{};
    int m_resetIndex = 0;
    QList<QWidget *> m_secondRow;
    QWidget *m_wordPanel = nullptr;
    QList<QGroupBox *> m_configFrames;
    QList<std::array<QWidget *, kSystems>> m_fieldControls;
};
