#pragma once

#include <string_view>

#include "TQPlatform/Network/HTTPAddress.hpp"
#include "TQPlatform/Network/URLSession.hpp"

namespace tq {

/// The error of this kind for a request to `address`: a sentence that names the server and, where there is one, the
/// reason.
URLError failure(URLError::Code code, const HTTPAddress& address, std::string_view reason = {});

/// The error for libcurl's `result` of the transfer made with `handle`; not for success.
URLError failureOf(int result, void* handle, const HTTPAddress& address);

}  // namespace tq
