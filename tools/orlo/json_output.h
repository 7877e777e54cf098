// JSON helpers shared by the orlo tool's commands. Keys keep their insertion order, so that
// the documented shapes come out exactly as documented.
#pragma once

#include <nlohmann/json.hpp>

#include <orlo/base/block/block_type.h>

namespace Orlo::cli {

using Json = nlohmann::ordered_json;

// {"class_id": c, "super_class_id": s, "sub_id": n}
inline Json TypeJson(BlockType type) {
  Json json;
  json["class_id"] = type.class_id;
  json["super_class_id"] = type.super_class_id;
  json["sub_id"] = type.sub_id;
  return json;
}

}  // namespace Orlo::cli
