#include "model/engine_config.h"

namespace rotika {

EngineConfig& engineConfig = *new EngineConfig;

} // namespace rotika
