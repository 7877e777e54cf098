#include <orlo/base/data/internal/shared_name.h>

#include <unordered_set>

namespace Orlo::internal {

namespace {

// Node-based, so a pointer to an entry stays valid however the set grows.
std::unordered_set<std::string>& Pool() {
  static std::unordered_set<std::string> pool;
  return pool;
}

const std::string& EmptyText() {
  static const std::string empty;
  return empty;
}

}  // namespace

SharedName::SharedName(const std::string& text) {
  if (!text.empty()) m_text = &*Pool().insert(text).first;
}

const std::string& SharedName::Get() const { return m_text != nullptr ? *m_text : EmptyText(); }

}  // namespace Orlo::internal
