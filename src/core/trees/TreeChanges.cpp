#include "core/trees/TreeChanges.h"

#include "core/trees/LinkCheck.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <filesystem>

namespace larkspur {

namespace fs = std::filesystem;

namespace {

fs::path pathOf(const QString &name) {
    return fs::path(QFile::encodeName(name).toStdString());
}

QString textOf(const std::error_code &error, const fs::path &path) {
    return QStringLiteral("%1: %2").arg(QFile::decodeName(path.c_str()),
                                        QString::fromLocal8Bit(error.message().c_str()));
}

/// The names in a read-only folder cannot be removed before it is made writable.
void openFolders(const fs::path &folder) {
    std::error_code error;
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, error);
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        if (entry->is_directory(error) && !entry->is_symlink(error))
            openFolders(entry->path());
}

std::expected<void, QString> linkEntry(const fs::directory_entry &entry, const fs::path &to) {
    std::error_code error;
    const fs::path place = to / entry.path().filename();
    if (entry.is_symlink(error)) {
        fs::copy_symlink(entry.path(), place, error);
    } else if (entry.is_directory(error)) {
        fs::create_directory(place, error);
        for (fs::directory_iterator child(entry.path(), error), end; !error && child != end;
             child.increment(error))
            if (const auto linked = linkEntry(*child, place); !linked)
                return linked;
        if (!error)
            fs::permissions(place, entry.status(error).permissions(), error);
    } else if (entry.is_regular_file(error)) {
        fs::create_hard_link(entry.path(), place, error);
    }
    if (error)
        return std::unexpected(textOf(error, place));
    return {};
}

} // namespace

std::expected<void, QString> removeTree(const QString &root, const QString &folder) {
    if (const auto isOurs = withoutLinks(root, folder); !isOurs)
        return isOurs;
    const fs::path path = pathOf(folder);
    std::error_code error;
    if (!fs::exists(fs::symlink_status(path, error)))
        return {};
    fs::remove_all(path, error);
    if (!error)
        return {};
    openFolders(path);
    fs::remove_all(path, error);
    return error ? std::expected<void, QString>(std::unexpected(textOf(error, path)))
                 : std::expected<void, QString>();
}

std::expected<void, QString> linkTree(const QString &root, const QString &from, const QString &to) {
    for (const QString &path : {from, to})
        if (const auto isOurs = withoutLinks(root, path); !isOurs)
            return isOurs;
    QDir().mkpath(QFileInfo(to).absolutePath());
    std::error_code error;
    fs::create_directory(pathOf(to), error);
    for (fs::directory_iterator entry(pathOf(from), error), end; !error && entry != end;
         entry.increment(error))
        if (const auto linked = linkEntry(*entry, pathOf(to)); !linked)
            return linked;
    if (!error)
        fs::permissions(pathOf(to), fs::status(pathOf(from), error).permissions(), error);
    if (error)
        return std::unexpected(textOf(error, pathOf(from)));
    return {};
}

std::expected<void, QString> moveTree(const QString &root, const QString &from, const QString &to) {
    for (const QString &path : {from, to})
        if (const auto isOurs = withoutLinks(root, path); !isOurs)
            return isOurs;
    QDir().mkpath(QFileInfo(to).absolutePath());
    if (std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0)
        return {};
    return std::unexpected(textOf(std::error_code(errno, std::generic_category()), pathOf(from)));
}

} // namespace larkspur
