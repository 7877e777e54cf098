// Defines BitmapManager, the list of directories in which the bitmaps a scene names are
// looked for. The host creates it and hands it to the engine, which never owns it; the
// manager owns its copies of the directory strings.
#pragma once

#include <string>
#include <vector>

namespace Orlo {

class BitmapManager {
 public:
  BitmapManager();
  virtual ~BitmapManager();

  // Appends directory to the search list. Returns true when it was added; false for a
  // null or empty string and for a directory already in the list (compared as written:
  // "maps" and "maps/" are two entries), which leaves the list unchanged.
  virtual bool AddDirectory(const char* directory);

  // The search directories, in the order they were added.
  int GetNumDirectories() const;
  // The directory at index, or "" when index is outside 0 .. GetNumDirectories() - 1.
  std::string GetDirectory(int index) const;
  const std::vector<std::string>& GetDirectories() const;

  // Empties the search list.
  void ClearDirectories();

 private:
  // No two entries are equal; none is empty.
  std::vector<std::string> m_directories;
};

}  // namespace Orlo
