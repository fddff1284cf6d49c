// InUnresponsiveArea: whether a window point lies over one of the host's own controls.
#pragma once

/// True when (x, y), in window coordinates, lies in a tracking area of the main window's
/// content view, other than one covering the whole content view. The top edge of an area
/// counts as inside and the bottom edge does not.
bool InUnresponsiveArea(float x, float y);
