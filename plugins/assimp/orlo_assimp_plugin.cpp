// The asset plug-in as a loadable module: the orlo tool loads it with `--plugin` (or from a
// folder of ORLO_PLUGIN_PATH) and calls its one exported function, which registers the
// plug-in's block classes after the base library's.
#include "plugins/assimp/register_plugin.h"

extern "C" __attribute__((visibility("default"))) void OrloRegisterPlugin() {
  orlo_assimp::RegisterAssimpPlugin();
}
