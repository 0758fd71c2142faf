#pragma once

#include <QList>
#include <QString>
#include <QStringList>

class QWidget;

// What a card's model name tells the program: which view opens for it, how the overview classes
// it and how its name is displayed. The knowledge is a chain of prefix tests on the first few
// characters; the first row that fits wins, so the order of the rows matters.

struct ModelRow {
    QStringList prefixes; // any one fits; comparison is exact and case sensitive
    QString form;         // the view's form name, as registered with RegisterView
    QString tag;          // goes to SelFormName when the view opens
};

// The dispatch rows, in order.
const QList<ModelRow> &ModelRows();
// The first row that fits `name`, or null.
const ModelRow *FindModelRow(const QString &name);

// Opens the view for the model name: the view's opening routine sets SelFormName and shows it.
// A name no row knows, or a view that is not there, leaves the screen as it is. CardNo is set
// before the call.
void OpenCardView(const QString &name);

// The form a view tag (SelFormName, PrevFormName) stands for: "Over" gives "frmOverview",
// "QF16" gives "frmQF16". Empty for a tag no view has.
QString FormNameOfTag(const QString &tag);

// Makes `form` the one view on show in the main window's work area, and hides the one shown
// before. Call with SelFormName already set to the form's tag.
void ShowView(QWidget *form);
// The same by form name; the form is made on first use. Nothing happens for an unknown name.
void ShowView(const QString &formName);

// Fills the overview's class and type cells of the slot for the model name.
void ShowCardClass(int slot, const QString &name);

// The display names: a gateway name's last place and a multi-power name's eighth place carry a
// number that shows in brackets.
QString CardShowName(const QString &name);
QString MultiPowerShowName(const QString &name);
int MultiPowerPage(const QString &name);
// The display name the overview and the card selector use for any model name.
QString DisplayName(const QString &name);
