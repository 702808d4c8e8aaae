#include "core/files/FolderNames.h"

#include <QFile>

#include <filesystem>

namespace larkspur {

namespace fs = std::filesystem;

std::expected<QStringList, QString> namesIn(const QString &folder) {
    QStringList names;
    std::error_code error;
    const fs::path path = QFile::encodeName(folder).toStdString();
    fs::directory_iterator entry(path, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error))
        if (const QString name = QFile::decodeName(entry->path().filename().c_str());
            !name.startsWith(QLatin1Char('.')))
            names.append(name);
    std::error_code none;
    const bool isMissing =
        error == std::errc::no_such_file_or_directory && !fs::is_symlink(fs::symlink_status(path, none));
    if (error && !isMissing)
        return std::unexpected(
            QStringLiteral("%1 cannot be read: %2").arg(folder, QString::fromStdString(error.message())));
    return names;
}

} // namespace larkspur
