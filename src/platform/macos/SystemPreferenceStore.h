#pragma once

#include "core/settings/PreferenceStore.h"

#include <QSettings>

namespace larkspur {

/// The user defaults. The system keeps them, and joins the changes of several programs.
class SystemPreferenceStore final : public PreferenceStore {
  public:
    SystemPreferenceStore(const QString &organization, const QString &application);

    std::expected<QVariantMap, QString> read() override;
    std::expected<QVariantMap, QString> change(const QVariantMap &values) override;

  private:
    std::expected<void, QString> synchronize();

    QSettings m_settings;
};

} // namespace larkspur
