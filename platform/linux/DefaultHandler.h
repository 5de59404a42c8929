#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Vastel_Connect {

/// The application that opens the URLs of a scheme by default, ready to be started.
struct DefaultHandler {
  /// The name of its desktop entry without ".desktop".
  std::string application;
  /// The executable's absolute path.
  std::string program;
  /// Its arguments, the program's name as the entry has it first.
  std::vector<std::string> arguments;
};

/// Finds the default handler of `scheme` (lower case) by the freedesktop rules for MIME
/// applications and desktop entries, and puts `url` where its command line wants it. Absent
/// wherever it is not certain, or KDE's rules may give another one there: then an opener of
/// the desktop's is to be asked, which knows all the rules.
[[nodiscard]] std::optional<DefaultHandler> findDefaultHandler(std::string_view scheme,
                                                               std::string_view url);

}  // namespace Vastel_Connect
