#pragma once

#include <QDateTime>
#include <QDialog>
#include <QList>
#include <QPointer>
#include <QString>
#include <QStringList>

class CardView;
class QLabel;
class QPushButton;
class QTableWidget;

// One parameter in the compare: what the card holds and what a Download would write, both as
// the view's fields show them.
struct CompareRow {
    QString name;
    QString onCard;       // as an Upload shows it
    QString toWrite;      // as a Download writes it
    bool read = false;    // an Upload reads it
    bool written = false; // a Download writes it
    bool answered() const { return !read || !onCard.isEmpty(); }
    // "0" typed where the card shows "0.0" is the same value: numbers compare as numbers.
    bool differs() const;
};

struct CompareResult {
    QString source;
    QDateTime when;
    QList<CompareRow> rows;
    // The writes the Download would have sent, "G01 I42 D100", in order: held back, never sent.
    QStringList heldWrites;
    bool lineOpen = true; // the line was open when the compare began
    int noReplies = 0;    // steps of the card's read that got no reply
    int differing() const;
    int unanswered() const;
};

// The compare before a Download. The view's own Download runs dry on a scratch copy of the view
// that holds the user's edits, with every write held back from the line; then the view's own
// Upload reads the card into the same copy. Both run on a record of marks, so the cells each of
// them fills tell which parameters it moves. The user's fields and the card's record are left
// exactly as they were, and the only lines that reach the card are the Upload's.
class CardCompare {
public:
    static CompareResult Run(CardView &view);
};

// Copies the state of every named control of `from` into the control of the same name and kind
// in `to`: texts, list choices, checks, numbers, the hidden flag and the controls' own
// properties (a field marked refused).
void CopyControlStates(const QWidget &from, QWidget &to);

// The compare window (frmCompare): the card's values beside what a Download would write, the
// rows that differ marked. "Download" asks the view for its Download; "Close" leaves everything
// as it is.
class FrmCompare : public QDialog {
    Q_OBJECT
public:
    explicit FrmCompare(QWidget *parent = nullptr);
    void showResult(CardView *view, const CompareResult &result);

    QLabel *lblSource;
    QLabel *lblSummary;
    QTableWidget *tblCompare;
    QPushButton *cmdDownload;
    QPushButton *cmdClose;

private:
    void cmdDownload_Click();
    QPointer<CardView> m_view;
};

// Shows the result in the compare window (made on first use), without waiting for it.
void ShowCompare(CardView &view, const CompareResult &result);
// The compare window, if it was made.
FrmCompare *CompareDialog();
