// Must not compile: the selection classes reach the engine only through its C operations.
#include "engine/Document.h"
