#include "MoDiffEngine.h"

MoDiffEngine::~MoDiffEngine() = default;
