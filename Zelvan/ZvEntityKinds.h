#pragma once
#include "Zelvan/ZvServer.h"
#include <vector>

/// The kinds of entities that the library itself provides.
std::vector<ZvServer::Kind> ZvBuiltInKinds();
