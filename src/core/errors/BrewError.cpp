#include "core/errors/BrewError.h"

namespace larkspur {

QString BrewError::description() const {
    switch (kind) {
    case Kind::CommandFailed:
    case Kind::ServiceControlFailed:
    case Kind::AppManagementRequired:
        return text;
    case Kind::PackageNotFound:
        return QStringLiteral("Package '%1' not found").arg(text);
    case Kind::BrewNotInstalled:
        return QStringLiteral("Homebrew is not installed");
    case Kind::InvalidOutput:
        return text.isEmpty() ? QStringLiteral("Homebrew's answer could not be read")
                              : QStringLiteral("Homebrew's answer could not be read: %1").arg(text);
    case Kind::Timeout:
        return QStringLiteral("Command timed out: %1").arg(text);
    case Kind::Stopped:
        return QStringLiteral("Stopped");
    }
    return text;
}

} // namespace larkspur
