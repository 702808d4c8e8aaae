#pragma once

#include <QCoroTask>

#include <stop_token>

namespace larkspur {

/// A coroutine of the main thread. It starts at once; dropping it does not stop it, only its stop token does.
template <typename T = void>
using Task = QCoro::Task<T>;

/// Asks running work to end early. Requested on the main thread only.
using StopToken = std::stop_token;
using StopSource = std::stop_source;

} // namespace larkspur
