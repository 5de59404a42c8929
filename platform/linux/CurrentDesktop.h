#pragma once

#include <string>
#include <vector>

namespace Vastel_Connect {

/// XDG_CURRENT_DESKTOP in lower case, most specific first.
[[nodiscard]] std::vector<std::string> currentDesktops();

/// Whether the desktop is KDE, where an answer is certain only if KDE's rules give it, too.
[[nodiscard]] bool isKde();

/// Whether the desktop is KDE and one of its settings, the user's or the system's, may restrict
/// which URLs it opens: then nobody else knows which.
[[nodiscard]] bool kdeRestrictsUrls();

}  // namespace Vastel_Connect
