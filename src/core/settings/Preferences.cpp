#include "core/settings/Preferences.h"

#include <utility>

namespace larkspur {

Preferences::Preferences(std::unique_ptr<PreferenceStore> store, QObject *parent)
    : QObject(parent)
    , m_store(std::move(store)) {
    reload();
}

bool Preferences::boolean(const QString &key, bool fallback) const {
    const QVariant value = m_values.value(key);
    return value.canConvert<bool>() ? value.toBool() : fallback;
}

QString Preferences::string(const QString &key, const QString &fallback) const {
    const QVariant value = m_values.value(key);
    return value.canConvert<QString>() ? value.toString() : fallback;
}

QStringList Preferences::strings(const QString &key) const {
    const QVariant value = m_values.value(key);
    return value.canConvert<QStringList>() ? value.toStringList() : QStringList();
}

qint64 Preferences::integer(const QString &key, qint64 fallback) const {
    bool isNumber = false;
    const qint64 number = m_values.value(key).toLongLong(&isNumber);
    return isNumber ? number : fallback;
}

std::optional<qint64> Preferences::knownInteger(const QString &key, qint64 fallback) const {
    if (!m_values.contains(key))
        return damage().isEmpty() ? std::optional(fallback) : std::nullopt;
    bool isNumber = false;
    const qint64 number = m_values.value(key).toLongLong(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

QString Preferences::damage() const {
    const QString aside = m_store->keptAside();
    const QString consequence = QStringLiteral("Defaults hold, and no restore point and no saved version is "
                                               "removed to keep within a limit that is not known.");
    if (!m_readFailure.isEmpty())
        return QStringLiteral("The preferences cannot be read: %1. %2").arg(m_readFailure, consequence);
    return aside.isEmpty() ? QString()
                           : QStringLiteral("Earlier preferences could not be read and are kept as %1. %2 "
                                            "Remove that file when the preferences are right again.")
                                 .arg(aside, consequence);
}

QByteArray Preferences::bytes(const QString &key) const {
    return m_values.value(key).toByteArray();
}

void Preferences::set(const QString &key, const QVariant &value) {
    if (const auto stored = store(key, value); !stored)
        Q_EMIT choiceNotSaved(stored.error());
}

void Preferences::remember(const QString &key, const QVariant &value) {
    (void)store(key, value);
}

void Preferences::reload() {
    const auto stored = m_store->read();
    m_readFailure = stored ? QString() : stored.error();
    if (stored)
        adopt(*stored);
}

/// Judged by what the store holds, not by what is in memory: another program may have changed it.
std::expected<void, QString> Preferences::store(const QString &key, const QVariant &value) {
    m_unsaved.insert(key, value);
    const auto stored = m_store->change(m_unsaved);
    if (stored)
        m_unsaved.clear();
    adopt(stored.value_or(m_values));
    if (stored)
        return {};
    Q_EMIT notSaved(stored.error());
    return std::unexpected(stored.error());
}

/// What could not be saved counts nevertheless.
void Preferences::adopt(const QVariantMap &stored) {
    const QVariantMap before = std::exchange(m_values, stored);
    m_values.insert(m_unsaved);
    QStringList keys = before.keys() + m_values.keys();
    keys.removeDuplicates();
    for (const QString &key : std::as_const(keys))
        if (before.value(key) != m_values.value(key))
            Q_EMIT changed(key);
}

} // namespace larkspur
