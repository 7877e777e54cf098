#include <orlo/base/engine/internal/event_mute.h>

#include <cassert>

#include <orlo/base/block/block.h>

namespace Orlo::internal {

void EventMute::Add(Block* block) {
  if (block == nullptr || !block->GetSendEvents()) return;
  block->SetSendEvents(false);
  m_muted.push_back(block);
}

void EventMute::RestoreAll() {
  for (Block* block : m_muted) block->SetSendEvents(true);
  m_muted.clear();
}

void EventMute::NoteNumbers(const std::vector<Block*>& numbered) {
  m_noted.emplace(numbered);
  for (Block* block : m_muted) m_noted->Insert(block);
  m_num_noted = m_muted.size();
  m_muted.clear();
}

void EventMute::RestoreReachable(Block* root) {
  assert(m_noted.has_value() && "RestoreReachable requires NoteNumbers first");
  NumberedSet seen(m_noted->Numbered());
  std::vector<Block*> stack{root};
  seen.Insert(root);
  std::size_t restored = 0;
  while (!stack.empty() && restored < m_num_noted) {
    Block* block = stack.back();
    stack.pop_back();
    if (m_noted->Contains(block)) {
      block->SetSendEvents(true);
      ++restored;
    }
    for (int i = 0; i < block->NumDependencies(); ++i) {
      Block* dependency = block->GetDependency(i);
      if (dependency != nullptr && seen.Insert(dependency)) stack.push_back(dependency);
    }
  }
  m_noted.reset();
  m_num_noted = 0;
}

void EventMute::RestoreNumbered() {
  assert(m_noted.has_value() && "RestoreNumbered requires NoteNumbers first");
  for (Block* block : m_noted->Numbered()) {
    if (m_noted->Contains(block)) block->SetSendEvents(true);
  }
  m_noted.reset();
  m_num_noted = 0;
}

}  // namespace Orlo::internal
