#include "core/settings/FilePreferenceStore.h"

#include "core/files/AtomicFile.h"
#include "core/files/WholeFile.h"
#include "core/lock/ChangeLock.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSettings>

#include <algorithm>

namespace larkspur {

namespace {

constexpr qint64 largest = 4 * 1024 * 1024; // bytes
const QLatin1String bytesMark("base64");

QJsonValue toJson(const QVariant &value) {
    if (value.typeId() == QMetaType::QByteArray)
        return QJsonObject{{bytesMark, QString::fromLatin1(value.toByteArray().toBase64())}};
    return QJsonValue::fromVariant(value);
}

QVariant fromJson(const QJsonValue &value) {
    if (value.isObject())
        return QByteArray::fromBase64(value.toObject().value(bytesMark).toString().toLatin1());
    const QJsonArray array = value.toArray();
    if (value.isArray() && std::ranges::all_of(array, [](const auto &word) { return word.isString(); }))
        return value.toVariant().toStringList();
    return value.toVariant();
}

QByteArray textOf(const QVariantMap &values) {
    QJsonObject object;
    for (auto entry = values.begin(); entry != values.end(); ++entry)
        object.insert(entry.key(), toJson(entry.value()));
    return QJsonDocument(object).toJson();
}

/// What earlier versions have written. Empty where there is nothing; a file that cannot be read is a failure.
std::expected<QVariantMap, QString> earlierValues(const QString &path) {
    if (const auto text = readWholeFile(path, largest); !text)
        return text.error().isMissing ? std::expected<QVariantMap, QString>(QVariantMap())
                                      : std::unexpected(text.error().reason);
    const QSettings file(path, QSettings::IniFormat);
    QVariantMap values;
    for (const QString &key : file.allKeys())
        if (const QVariant value = file.value(key); value.isValid())
            values.insert(key, value);
    return values;
}

} // namespace

FilePreferenceStore::FilePreferenceStore(const QString &folder, std::unique_ptr<FileCalls> calls)
    : m_path(folder + QStringLiteral("/preferences.json"))
    , m_earlierPath(folder + QStringLiteral("/preferences.ini"))
    , m_calls(calls ? std::move(calls) : std::make_unique<FileCalls>()) {}

std::expected<FilePreferenceStore::Contents, QString> FilePreferenceStore::contents() const {
    const auto text = readWholeFile(m_path, largest);
    if (!text && text.error().isMissing) {
        const auto earlier = earlierValues(m_earlierPath);
        return earlier ? std::expected<Contents, QString>(Contents{.values = *earlier})
                       : std::unexpected(earlier.error());
    }
    if (!text)
        return std::unexpected(text.error().reason);
    const QJsonDocument document = QJsonDocument::fromJson(*text);
    Contents found;
    if (!document.isObject())
        found.damaged = *text; // an empty one too: the program writes none
    const QJsonObject object = document.object();
    for (auto entry = object.begin(); entry != object.end(); ++entry)
        if (const QVariant value = fromJson(entry.value()); value.isValid())
            found.values.insert(entry.key(), value);
    return found;
}

std::expected<QVariantMap, QString> FilePreferenceStore::read() {
    auto found = contents();
    if (!found)
        return std::unexpected(found.error());
    if (found->isDamaged())
        return std::unexpected(QStringLiteral("%1 is damaged").arg(m_path));
    return std::move(found->values);
}

QString FilePreferenceStore::keptAside() const {
    return QFileInfo::exists(asidePath()) ? asidePath() : QString();
}

QString FilePreferenceStore::asidePath() const {
    return m_path + QStringLiteral(".unreadable");
}

std::expected<QVariantMap, QString> FilePreferenceStore::change(const QVariantMap &values) {
    const auto lock = lockForChange(m_path + QStringLiteral(".lock"), QStringLiteral("the preferences"));
    if (!lock)
        return std::unexpected(lock.error());
    auto found = contents();
    if (!found)
        return std::unexpected(found.error());
    const QVariantMap before = found->values;
    found->values.insert(values);
    if (found->values == before && QFileInfo::exists(m_path) && !found->isDamaged())
        return found->values;
    // The oldest is the one that may hold what was lost.
    if (found->isDamaged() && !QFileInfo::exists(asidePath()))
        if (const auto kept = writeFileAtomically(asidePath(), *found->damaged, {}, *m_calls); !kept)
            return std::unexpected(kept.error());
    if (const auto written = writeFileAtomically(m_path, textOf(found->values), {}, *m_calls); !written)
        return std::unexpected(written.error());
    removeUnfinishedFiles(QFileInfo(m_path).path());
    return found->values;
}

} // namespace larkspur
