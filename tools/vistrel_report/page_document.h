// The HTML document that all pages of the reader share: head, style sheet and content security policy.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "tools/vistrel_report/markup.h"

/// What every page begins with.
inline constexpr std::string_view kPageStart = "<!DOCTYPE html";

/// A whole document, titled `title` in its head and in its first heading. `write` adds what follows that
/// heading; it closes what it opens.
std::string PageDocument(const std::string& title, const std::function<void(Markup&)>& write);
