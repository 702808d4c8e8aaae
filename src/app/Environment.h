#pragma once

#include "core/authorization/MemoryProtection.h"
#include "core/authorization/PasswordStore.h"
#include "core/authorization/PasswordVerifier.h"
#include "core/process/PseudoTerminal.h"
#include "core/settings/Locations.h"

#include <QSettings>

#include <expected>
#include <memory>

namespace larkspur {

/// What the composition is made for: the person's own Homebrew or the sample one.
struct Environment {
    Locations locations;
    std::unique_ptr<QSettings> preferenceStore;
    std::unique_ptr<PseudoTerminal> terminal;
    std::unique_ptr<PasswordVerifier> passwordVerifier;
    std::unique_ptr<PasswordStore> passwordStore;
    std::unique_ptr<MemoryProtection> memoryProtection;
};

/// The person's own Homebrew and files.
Environment userEnvironment();

/// A Homebrew of invented packages below `folder`, with data and preferences of its own. Made there if it is
/// missing; `fresh` replaces what is there. The error is one line of text.
std::expected<Environment, QString> sampleEnvironment(const QString &folder, bool fresh);

/// Where the sample stands unless another folder is named.
QString defaultSampleFolder();

} // namespace larkspur
