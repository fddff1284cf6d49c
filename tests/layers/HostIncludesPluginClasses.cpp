// Must not compile: the host sees the plug-in's module table and filter catalogue, no more.
#include "Classes/Selection/SelectionMainView.h"
