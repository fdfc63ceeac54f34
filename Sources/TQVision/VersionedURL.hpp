#pragma once

#include <string_view>

#include "TQPlatform/Network/WebURL.hpp"

namespace tq {

/// The address of a service below version 1 of an API. A user may give the base with or without the version: where
/// its text ends in "/v1" or "/v1/" the `path` (such as "messages") follows at once, otherwise "v1/" stands before it.
WebURL versionedURL(const WebURL& base, std::string_view path);

}  // namespace tq
