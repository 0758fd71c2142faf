#include "ui/viewregistry.h"

#include <QHash>
#include <QPointer>
#include <QWidget>

namespace {

struct Entry {
    std::function<QWidget *()> factory;
    // A made form dies with its parent (the main window's work area); it is made again then.
    QPointer<QWidget> form;
};

ViewHost *g_host = nullptr;

QHash<QString, Entry> &entries() {
    static QHash<QString, Entry> table;
    return table;
}

} // namespace

void RegisterView(const QString &formName, std::function<QWidget *()> factory) {
    Entry &entry = entries()[formName];
    if (!entry.form) entry.factory = std::move(factory);
}

QWidget *ViewByName(const QString &formName) {
    auto it = entries().find(formName);
    if (it == entries().end() || !it->factory) return nullptr;
    if (!it->form) {
        QWidget *made = it->factory();
        if (!made) return nullptr;
        if (made->objectName().isEmpty()) made->setObjectName(formName);
        made->hide();
        // The factory may have looked the registry up again; find the entry anew.
        entries()[formName].form = made;
        return made;
    }
    return it->form;
}

QWidget *LoadedView(const QString &formName) {
    auto it = entries().constFind(formName);
    return it == entries().constEnd() ? nullptr : it->form.data();
}

QWidget *MakeViewInstance(const QString &formName) {
    const auto it = entries().constFind(formName);
    if (it == entries().constEnd() || !it->factory) return nullptr;
    const std::function<QWidget *()> factory = it->factory;
    QWidget *made = factory();
    if (made && made->objectName().isEmpty()) made->setObjectName(formName);
    return made;
}

bool IsViewRegistered(const QString &formName) {
    auto it = entries().constFind(formName);
    return it != entries().constEnd() && it->factory;
}

QStringList RegisteredViewNames() {
    QStringList names;
    for (auto it = entries().cbegin(); it != entries().cend(); ++it)
        if (it->factory) names << it.key();
    names.sort();
    return names;
}

void ClearViewRegistry() {
    const auto table = entries();
    entries().clear();
    for (const Entry &entry : table)
        delete entry.form.data();
}

void SetViewHost(ViewHost *host) {
    g_host = host;
}
ViewHost *CurrentViewHost() {
    return g_host;
}
