#include <orlo/base/block/internal/saved_slots.h>

#include <string>

#include <orlo/support/scene_load.h>

namespace Orlo::internal {

bool ReadListSlotCount(SceneLoad* load, const char* what, std::size_t& count) {
  std::int32_t read = 0;
  // A count cut short is already an error of the reader.
  if (!load->ReadInt32(read)) return false;
  const std::uint64_t bytes_left = load->BytesLeftInFile();
  if (read < 0 || static_cast<std::uint64_t>(read) > bytes_left / kSavedSlotBytes) {
    load->ReportCorruption(std::string(what) + " count " + std::to_string(read) +
                           " does not fit the " + std::to_string(bytes_left) +
                           " bytes left in the file");
    return false;
  }
  count = static_cast<std::size_t>(read);
  return true;
}

}  // namespace Orlo::internal
