#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Vastel_Connect {

/// A folder that may say which application opens what.
struct MimeFolder {
  std::string path;
  /// Whether the applications' desktop entries are in such folders too.
  bool holdsEntries;
};

/// The user's before the system's, those of choices before those of applications. Absent when one
/// is not an absolute path.
[[nodiscard]] std::optional<std::vector<MimeFolder>> findMimeFolders();

/// A desktop entry that may be the one.
struct Candidate {
  std::string id;
  /// The number of the folder whose list named the entry. One of that name in an earlier folder
  /// shadows it.
  std::size_t firstFolder = 0;
};

/// Desktop entries to be tried for a type, best first; absent when a file is not plain.
using Candidates = std::optional<std::vector<Candidate>>;

/// Those that one folder chooses.
[[nodiscard]] Candidates findDefaults(const MimeFolder& folder, const std::string& type);

/// Those that take the type.
[[nodiscard]] Candidates findAssociated(const std::vector<MimeFolder>& folders,
                                        const std::string& type);

}  // namespace Vastel_Connect
