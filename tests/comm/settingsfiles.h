#pragma once

#include "ui/people.h"
#include "ui/textfile.h"

#include <QFile>
#include <QIODevice>
#include <QList>
#include <QString>

namespace vxtest {

// Answers every file dialog with `path` and keeps what each was asked; puts the real dialogs and
// the plain disk writes back at the end.
struct FileAnswers {
    QString path;
    QList<People::FileRequest> requests;

    explicit FileAnswers(const QString &answer) : path(answer) {
        People::setFileHandler([this](const People::FileRequest &request) {
            requests << request;
            return path;
        });
    }
    ~FileAnswers() {
        People::setFileHandler({});
        TextFile::setWriteFunction({});
    }
    FileAnswers(const FileAnswers &) = delete;
    FileAnswers &operator=(const FileAnswers &) = delete;
};

// From now on the disk is full at the `n`-th write of a save (counted from 1): that write puts
// down half its bytes, the ones after it nothing.
inline void failDiskAtWrite(int n) {
    auto count = std::make_shared<int>(0);
    TextFile::setWriteFunction([count, n](QIODevice &device, const QByteArray &bytes) -> qint64 {
        ++*count;
        if (*count < n) return device.write(bytes);
        if (*count == n) return device.write(bytes.left(bytes.size() / 2));
        return 0;
    });
}

inline QByteArray fileBytes(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline bool putFile(const QString &path, const QByteArray &bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

} // namespace vxtest
