#pragma once

/// Words for what commonly goes wrong with files; the same on every system. They complete "cannot open 'x':
/// ...".
namespace ZvPlatform::Reason {

inline constexpr const char* kNoSuchFile = "no such file";
inline constexpr const char* kNoSuchFolder = "its folder does not exist";
inline constexpr const char* kIsFolder = "it is a folder";
inline constexpr const char* kNotRegular = "it is not a regular file";
inline constexpr const char* kDenied = "access denied";
inline constexpr const char* kExists = "it exists already";
inline constexpr const char* kDiskFull = "the disk is full";
inline constexpr const char* kReadOnlyDisk = "the disk is read-only";
inline constexpr const char* kInUse = "another program uses it";
inline constexpr const char* kNameTooLong = "the name is too long";
inline constexpr const char* kBadName = "the name is not allowed";
inline constexpr const char* kTooManyOpen = "too many files are open";
inline constexpr const char* kOtherDisk = "it would be on another disk";
inline constexpr const char* kDamagedDisk = "the disk reports an error";

} // namespace ZvPlatform::Reason
