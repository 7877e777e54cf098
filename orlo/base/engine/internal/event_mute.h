// Defines EventMute, which silences the blocks of a file while they are linked and the
// post-load passes run.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include <orlo/base/engine/internal/numbered_set.h>

namespace Orlo {
class Block;
}

namespace Orlo::internal {

// Silences blocks for a while and lets them post again afterwards. A loaded graph has no
// listener yet and its blocks hold no cache worth telling about, but a file can share blocks
// along exponentially many paths, and every event a link or a post-load step posts would
// climb each of them. Only blocks that were posting are silenced, and only they are given it
// back.
class EventMute {
 public:
  EventMute() = default;
  EventMute(const EventMute&) = delete;
  EventMute& operator=(const EventMute&) = delete;

  void Reserve(std::size_t count) { m_muted.reserve(count); }
  // Silences `block` (null is ignored) if it posts.
  void Add(Block* block);
  // Lets every silenced block post again. Requires: none of them was destroyed.
  void RestoreAll();
  // Notes the silenced blocks by their numbers in the scene just numbered (`numbered` holds
  // each number's block), after which they may be destroyed; `numbered` must outlive the
  // restore. Requires: none of them was destroyed yet.
  void NoteNumbers(const std::vector<Block*>& numbered);
  // Lets the silenced blocks still reachable from `root` post again; the others may have been
  // released meanwhile and are not touched. Requires: NoteNumbers was called.
  void RestoreReachable(Block* root);
  // Lets the silenced blocks of the numbering post again, without a walk. Requires:
  // NoteNumbers was called, and every block of the numbering is still alive.
  void RestoreNumbered();

 private:
  std::vector<Block*> m_muted;  // each once: a block is silenced only while it posts
  // Once NoteNumbers has run: the silenced blocks, as pointers only (some may be gone).
  std::optional<NumberedSet> m_noted;
  std::size_t m_num_noted = 0;
};

}  // namespace Orlo::internal
