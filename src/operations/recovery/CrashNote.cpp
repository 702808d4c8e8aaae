#include "operations/recovery/CrashNote.h"

#include "core/files/AtomicFile.h"
#include "core/files/FolderNames.h"
#include "core/files/WholeFile.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QUuid>

namespace larkspur {

namespace {

constexpr qint64 largest = 1024 * 1024; // bytes

std::expected<QStringList, QString> noteNames(const QString &folder, const QString &kind) {
    auto names = namesIn(folder);
    if (!names)
        return names;
    names->removeIf([&](const QString &name) {
        return !name.contains(QLatin1Char('-') + kind + QLatin1Char('-')) ||
               !name.endsWith(QLatin1String(".json")) || QFileInfo(folder + QLatin1Char('/') + name).isDir();
    });
    names->sort(); // they begin with the time, so that their order is that of the crashes
    return names;
}

} // namespace

std::expected<CrashNote, QString> CrashNote::write(const QString &folder, const QString &kind,
                                                   const QJsonObject &contents) {
    const QString name = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMddHHmmsszzz")) +
                         QLatin1Char('-') + kind + QLatin1Char('-') +
                         QUuid::createUuid().toString(QUuid::Id128) + QStringLiteral(".json");
    CrashNote note(folder + QLatin1Char('/') + name, {});
    if (const auto written = note.update(contents); !written)
        return std::unexpected(written.error());
    note.m_contents = contents;
    return note;
}

std::expected<void, QString> CrashNote::update(const QJsonObject &contents) const {
    return writeFileAtomically(m_path, QJsonDocument(contents).toJson());
}

void CrashNote::remove() const {
    QFile::remove(m_path);
}

CrashNote::Standing CrashNote::standing(const QString &folder, const QString &kind) {
    Standing standing;
    const auto names = noteNames(folder, kind);
    if (!names)
        standing.failures.append(names.error());
    for (const QString &name : names.value_or(QStringList())) {
        const QString path = folder + QLatin1Char('/') + name;
        const auto text = readWholeFile(path, largest);
        if (!text && text.error().mayPass) {
            standing.failures.append(text.error().reason);
            continue;
        }
        const QJsonDocument document = QJsonDocument::fromJson(text.value_or(QByteArray()));
        (document.isObject() ? standing.readable : standing.unreadable)
            .append(CrashNote(path, document.object()));
    }
    return standing;
}

bool CrashNote::anyStanding(const QString &folder, const QString &kind) {
    const auto names = noteNames(folder, kind);
    return !names || !names->isEmpty();
}

std::expected<QString, QString> CrashNote::setAside() const {
    const QString aside = m_path + QStringLiteral(".unreadable");
    QFile file(m_path);
    if (!file.rename(aside))
        return std::unexpected(file.errorString());
    return aside;
}

} // namespace larkspur
