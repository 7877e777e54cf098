// Orlo: includes every public header of the library.
#pragma once

#include <orlo/support/affine_parts.h>
#include <orlo/support/bitmap_manager.h>
#include <orlo/support/box3.h>
#include <orlo/support/color.h>
#include <orlo/support/math.h>
#include <orlo/support/math_functions.h>
#include <orlo/support/matrix3.h>
#include <orlo/support/point3.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>
#include <orlo/support/state_container.h>
#include <orlo/support/state_recorder.h>
#include <orlo/support/status.h>
#include <orlo/support/time_interval.h>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_event.h>
#include <orlo/base/block/block_factory.h>
#include <orlo/base/block/block_listener.h>
#include <orlo/base/block/block_paths.h>
#include <orlo/base/block/slotless_block.h>
#include <orlo/base/block/block_table.h>
#include <orlo/base/block/block_type.h>

#include <orlo/base/data/data.h>
#include <orlo/base/data/data_bool.h>
#include <orlo/base/data/data_color.h>
#include <orlo/base/data/data_float.h>
#include <orlo/base/data/data_int.h>
#include <orlo/base/data/data_point3.h>
#include <orlo/base/data/data_string.h>
#include <orlo/base/data/data_table.h>

#include <orlo/base/controllers/bezier_controller.h>
#include <orlo/base/controllers/controller.h>
#include <orlo/base/controllers/float_controller.h>
#include <orlo/base/controllers/look_at_controller.h>
#include <orlo/base/controllers/matrix3_controller.h>
#include <orlo/base/controllers/point3_controller.h>
#include <orlo/base/controllers/transform3_controller.h>

#include <orlo/base/scene/export_tool.h>
#include <orlo/base/scene/flag_interface.h>
#include <orlo/base/scene/import_tool.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/material.h>
#include <orlo/base/scene/modifier.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/node_transform.h>
#include <orlo/base/scene/object.h>
#include <orlo/base/scene/object_modifier.h>
#include <orlo/base/scene/texture.h>
#include <orlo/base/scene/tool_block.h>

#include <orlo/base/engine/base_library.h>
#include <orlo/base/engine/block_load_data.h>
#include <orlo/base/engine/replace_dependency_state_container.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/engine/unknown_modifier.h>
#include <orlo/base/engine/unknown_object.h>
#include <orlo/base/engine/unknown_object_modifier.h>
