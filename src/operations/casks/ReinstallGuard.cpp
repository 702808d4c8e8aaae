#include "operations/casks/ReinstallGuard.h"

#include "core/async/Worker.h"

namespace larkspur {

Task<ReinstallGuard::Readiness> ReinstallGuard::prepare(PackageName token) {
    if (const auto aside = m_aside)
        co_return Readiness{.lines = co_await runInWorker([aside] { return aside->makeRoom(); })};
    struct Begun { // boxed: libstdc++ 12 cannot compare a task of such a value
        std::expected<std::unique_ptr<MovedAside>, QString> aside;
    };
    const CaskSetting setting = m_setting;
    auto [begun] =
        co_await runInWorker([setting, token] { return Begun{MovedAside::begin(setting, token)}; });
    if (!begun)
        co_return Readiness{.failure = begun.error()};
    m_aside = std::move(*begun);
    co_return Readiness{.lines = m_aside->warnings()};
}

Task<MovedAside::Conclusion> ReinstallGuard::conclude(bool isReported) {
    const auto aside = std::exchange(m_aside, nullptr);
    if (!aside)
        co_return MovedAside::Conclusion();
    co_return co_await runInWorker([aside, isReported] { return aside->conclude(isReported); });
}

} // namespace larkspur
