#include "core/settings/Preferences.h"

namespace larkspur {

Preferences::Preferences(std::unique_ptr<QSettings> store, QObject *parent)
    : QObject(parent)
    , m_store(std::move(store)) {}

bool Preferences::boolean(const QString &key, bool fallback) const {
    const QVariant value = m_store->value(key);
    return value.canConvert<bool>() ? value.toBool() : fallback;
}

QString Preferences::string(const QString &key, const QString &fallback) const {
    const QVariant value = m_store->value(key);
    return value.canConvert<QString>() ? value.toString() : fallback;
}

QStringList Preferences::strings(const QString &key) const {
    const QVariant value = m_store->value(key);
    return value.canConvert<QStringList>() ? value.toStringList() : QStringList();
}

qint64 Preferences::integer(const QString &key, qint64 fallback) const {
    bool isNumber = false;
    const qint64 number = m_store->value(key).toLongLong(&isNumber);
    return isNumber ? number : fallback;
}

QByteArray Preferences::bytes(const QString &key) const {
    return m_store->value(key).toByteArray();
}

void Preferences::set(const QString &key, const QVariant &value) {
    if (m_store->contains(key) && m_store->value(key) == value)
        return;
    m_store->setValue(key, value);
    Q_EMIT changed(key);
}

} // namespace larkspur
