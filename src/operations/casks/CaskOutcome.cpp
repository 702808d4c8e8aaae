#include "operations/casks/CaskOutcome.h"

#include "core/files/FolderNames.h"
#include "operations/casks/ApplicationBundle.h"
#include "operations/casks/CaskApplications.h"

#include <QFileInfo>

#include <algorithm>

namespace larkspur {

namespace {

/// Whether the cask as it is now has applications, all in place, and none of them belongs here: its vendor
/// has given the application another name. Only a receipt tells, which Homebrew writes last.
bool isUnderAnotherName(const QString &place, const PackageName &token, const CaskSetting &setting) {
    const auto places = caskApplicationPlaces(token, setting);
    const auto linked = caskApplications(token, setting);
    return places && linked && !places->isEmpty() && !places->contains(place) && !linked->isEmpty() &&
           std::ranges::all_of(*linked, &isBundle, &CaskApplication::place);
}

} // namespace

std::expected<bool, QString> isReplaced(const QString &place, const PackageName &token,
                                        const CaskSetting &setting) {
    if (isOccupied(place))
        return isWholeApplication(place, token, setting);
    return isUnderAnotherName(place, token, setting);
}

std::optional<QString> complaintIfForgotten(const PackageName &token, const CaskSetting &setting) {
    const QString home = caskFolder(token, setting);
    const auto versions = namesIn(home);
    const auto isFolder = [&home](const QString &name) {
        return QFileInfo(home + QLatin1Char('/') + name).isDir();
    };
    if (!versions || std::ranges::any_of(*versions, isFolder))
        return std::nullopt;
    return QStringLiteral("Homebrew no longer lists %1; “brew install --cask --adopt %1” brings it back.")
        .arg(token.text());
}

} // namespace larkspur
