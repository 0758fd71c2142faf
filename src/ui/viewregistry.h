#pragma once

#include <QString>
#include <QStringList>
#include <functional>

class QWidget;

// Views and the comm card dialogs are single objects, made on first use and kept for the run. Each
// registers a factory under its form name ("frmQF4", "frmNONE", "frmEther"); the rest of the
// program reaches it by that name only, so a view that does not exist yet is simply not found.

// The fixed size of every view in the main window's work area.
inline constexpr int kViewWidth = 800;
inline constexpr int kViewHeight = 640;

// The opening routine of a card view (or the start of a comm card dialog): what runs each time
// the user selects it, with the model name that led there.
class OpenableView {
public:
    virtual ~OpenableView() = default;
    virtual void OpenView(const QString &modelName) = 0;
};

// Registers (or replaces, while it is not yet made) the factory of a form.
void RegisterView(const QString &formName, std::function<QWidget *()> factory);
// The form, made on first use; null for a name nobody registered.
QWidget *ViewByName(const QString &formName);
// The form if it has been made, without making it.
QWidget *LoadedView(const QString &formName);
// A new form from the name's factory, apart from the one the registry keeps and owned by the
// caller (a scratch copy a tool works on); null for a name nobody registered.
QWidget *MakeViewInstance(const QString &formName);
// True when a factory is known for the name.
bool IsViewRegistered(const QString &formName);
// The form names with a factory, sorted.
QStringList RegisteredViewNames();
// Forgets every factory and every made form (tests); made forms are deleted.
void ClearViewRegistry();

// Where views are put on show: the main window's work area. The window installs itself as the
// host; without one (some tests) a view shows as a window of its own.
class ViewHost {
public:
    virtual ~ViewHost() = default;
    // Puts the view at the top left of the work area at the fixed view size.
    virtual void placeView(QWidget *view) = 0;
    // Hides every view of the work area but this one.
    virtual void hideViewsBut(QWidget *view) = 0;
};
void SetViewHost(ViewHost *host);
ViewHost *CurrentViewHost();
