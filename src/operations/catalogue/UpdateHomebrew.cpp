#include "operations/catalogue/UpdateHomebrew.h"

namespace larkspur {

namespace {

class UpdateHomebrew final : public Operation {
  public:
    QString title() const override { return QStringLiteral("Updating Homebrew"); }
    QString terminalCommand() const override { return QStringLiteral("brew update"); }

    Task<OperationReport> perform(LockedWork work) override {
        const PackageTarget homebrew{.name = QStringLiteral("Homebrew")};
        const auto run =
            co_await work.session->stream({.arguments = {"update"}}, work.context, BrewSession::Style::Plain);
        if (!run)
            co_return OperationReport{
                .packages = {{homebrew,
                              run.error().kind == BrewError::Kind::Stopped ? PackageEnd::Stopped
                                                                           : PackageEnd::Failed,
                              Deed::CatalogueUpdated}},
                .failure = run.error()};
        if (run->succeeded())
            co_return OperationReport{.packages = {{homebrew, PackageEnd::Done, Deed::CatalogueUpdated}},
                                      .hasWarnings = hasWarnings(run->lines)};
        co_return OperationReport{
            .packages = {{homebrew, PackageEnd::Failed, Deed::CatalogueUpdated, run->lines}}};
    }
};

} // namespace

OperationPtr updateHomebrew() {
    return std::make_shared<UpdateHomebrew>();
}

} // namespace larkspur
