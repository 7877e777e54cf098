#include <orlo/support/bitmap_manager.h>

#include <algorithm>

namespace Orlo {

BitmapManager::BitmapManager() = default;

BitmapManager::~BitmapManager() = default;

bool BitmapManager::AddDirectory(const char* directory) {
  if (directory == nullptr || directory[0] == '\0') return false;
  const std::string entry(directory);
  // Saving and loading add the scene's directory every time; keep one entry per directory.
  if (std::find(m_directories.begin(), m_directories.end(), entry) != m_directories.end()) {
    return false;
  }
  m_directories.push_back(entry);
  return true;
}

int BitmapManager::GetNumDirectories() const { return static_cast<int>(m_directories.size()); }

std::string BitmapManager::GetDirectory(int index) const {
  if (index < 0 || index >= GetNumDirectories()) return std::string();
  return m_directories[static_cast<size_t>(index)];
}

const std::vector<std::string>& BitmapManager::GetDirectories() const { return m_directories; }

void BitmapManager::ClearDirectories() { m_directories.clear(); }

}  // namespace Orlo
