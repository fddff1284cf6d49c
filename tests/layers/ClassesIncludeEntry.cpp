// Must not compile: the selection classes sit below the entry points and the controller.
#include "entry/QuillmarkPluginSelection.h"
