// Defines SharedName, the name of a data value, stored once per distinct text for the whole
// process.
// Parameter names repeat in every table of their kind ("min_position_limit_x" in every
// transform of a scene), so a value keeps a pointer to one shared copy of its text instead of
// a string of its own. The shared texts live in a process-wide pool that only grows: a text
// stays there once any value has carried it. Like the library's other statics, the pool is
// used from one thread at a time.
#pragma once

#include <string>

namespace Orlo::internal {

class SharedName {
 public:
  // The empty name; it takes nothing from the pool.
  SharedName() = default;
  explicit SharedName(const std::string& text);

  const std::string& Get() const;

 private:
  // Null for the empty name, else an entry of the pool, which never moves or goes away.
  const std::string* m_text = nullptr;
};

}  // namespace Orlo::internal
