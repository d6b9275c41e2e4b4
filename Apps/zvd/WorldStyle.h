#pragma once

class ZvDrawing;

/// Gives a map of countries and coasts the look of an atlas page: neighbours in different colours, the coast drawn over them, a grid
/// of meridians and parallels and a frame around.
void StyleWorld(ZvDrawing& drawing);
