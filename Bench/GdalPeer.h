#pragma once
#include <cstddef>
#include <filesystem>

class ZvDrawing;

/// What the fastest driver of GDAL needs for the same work.
namespace GdalPeer {
bool IsHere();
/// Keeps features of the drawing's lines with their attributes in memory, so that writing them is all that is
/// measured.
void Prepare(ZvDrawing& drawing);
/// Writes the prepared features as FlatGeobuf with its index.
void Write(const std::filesystem::path& file);
/// Reads into kept features; returns their number. They stay until Forget.
size_t Read(const std::filesystem::path& file);
void Forget();
} // namespace GdalPeer
