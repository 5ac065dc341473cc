#include "shell/event_loop_support.h"

struct EventLoopSupport::Parts {};

EventLoopSupport::EventLoopSupport() = default;
EventLoopSupport::~EventLoopSupport() = default;
