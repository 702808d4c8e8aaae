#pragma once

#include <QString>

namespace larkspur {

/// A failure of the Homebrew command layer.
struct BrewError {
    enum class Kind {
        CommandFailed,         ///< `text`: what brew said
        PackageNotFound,       ///< `text`: the name
        ServiceControlFailed,  ///< `text`: what brew said
        BrewNotInstalled,      ///< no brew was found
        InvalidOutput,         ///< a JSON document could not be decoded; `text`: where
        AppManagementRequired, ///< macOS refused a change to an application bundle
        Timeout,               ///< `text`: the command that printed nothing for too long
        Stopped,               ///< the person stopped it
    };

    Kind kind = Kind::CommandFailed;
    QString text;

    static BrewError commandFailed(QString text) { return {Kind::CommandFailed, std::move(text)}; }
    static BrewError packageNotFound(QString name) { return {Kind::PackageNotFound, std::move(name)}; }
    static BrewError serviceControlFailed(QString text) {
        return {Kind::ServiceControlFailed, std::move(text)};
    }
    static BrewError brewNotInstalled() { return {Kind::BrewNotInstalled, {}}; }
    static BrewError invalidOutput(QString where) { return {Kind::InvalidOutput, std::move(where)}; }
    static BrewError appManagementRequired(QString text) {
        return {Kind::AppManagementRequired, std::move(text)};
    }
    static BrewError timeout(QString command) { return {Kind::Timeout, std::move(command)}; }
    static BrewError stopped() { return {Kind::Stopped, {}}; }

    /// One sentence, for the log and as the text of errors that are shown as a failed command.
    QString description() const;

    bool operator==(const BrewError &) const = default;
};

} // namespace larkspur
