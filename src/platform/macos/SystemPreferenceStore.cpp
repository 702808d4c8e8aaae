#include "platform/macos/SystemPreferenceStore.h"

namespace larkspur {

SystemPreferenceStore::SystemPreferenceStore(const QString &organization, const QString &application)
    : m_settings(organization, application) {
    m_settings.setFallbacksEnabled(false); // only the program's own, not what holds for all programs
}

std::expected<void, QString> SystemPreferenceStore::synchronize() {
    m_settings.sync();
    if (m_settings.status() == QSettings::NoError)
        return {};
    return std::unexpected(QStringLiteral("the system's preferences cannot be written"));
}

std::expected<QVariantMap, QString> SystemPreferenceStore::read() {
    (void)synchronize(); // what is not written yet can be read all the same
    QVariantMap values;
    for (const QString &key : m_settings.allKeys())
        if (const QVariant value = m_settings.value(key); value.isValid())
            values.insert(key, value);
    return values;
}

std::expected<QVariantMap, QString> SystemPreferenceStore::change(const QVariantMap &values) {
    for (auto entry = values.begin(); entry != values.end(); ++entry)
        if (m_settings.value(entry.key()) != entry.value())
            m_settings.setValue(entry.key(), entry.value());
    if (const auto written = synchronize(); !written)
        return std::unexpected(written.error());
    return read();
}

} // namespace larkspur
