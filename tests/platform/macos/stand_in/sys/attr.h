// Stands in for macOS's header of this name: as much of it as platform/macos/attribute_request.cpp needs, from
// getattrlist(2). What it declares is in attribute_calls.cpp.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>

constexpr std::uint16_t ATTR_BIT_MAP_COUNT = 5;
constexpr std::uint32_t ATTR_CMN_NAME = 0x1;
constexpr std::uint32_t ATTR_CMN_OBJTYPE = 0x8;
constexpr std::uint32_t ATTR_CMN_FNDRINFO = 0x4000;
constexpr std::uint32_t ATTR_CMN_FULLPATH = 0x8000000;
constexpr std::uint32_t ATTR_CMN_ERROR = 0x20000000;
constexpr std::uint32_t ATTR_CMN_RETURNED_ATTRS = 0x80000000;
constexpr std::uint32_t ATTR_VOL_NAME = 0x2000;
constexpr std::uint32_t ATTR_VOL_INFO = 0x80000000;
constexpr std::uint32_t ATTR_FILE_ALLOCSIZE = 0x4;
constexpr std::uint32_t ATTR_FILE_DATALENGTH = 0x200;
constexpr unsigned long FSOPT_NOFOLLOW = 0x1;

struct attrlist {
  std::uint16_t bitmapcount;
  std::uint16_t reserved;
  std::uint32_t commonattr;
  std::uint32_t volattr;
  std::uint32_t dirattr;
  std::uint32_t fileattr;
  std::uint32_t forkattr;
};

struct attribute_set_t {
  std::uint32_t commonattr;
  std::uint32_t volattr;
  std::uint32_t dirattr;
  std::uint32_t fileattr;
  std::uint32_t forkattr;
};

struct attrreference_t {
  std::int32_t attr_dataoffset;
  std::uint32_t attr_length;
};

int getattrlistbulk(int folder, void* list, void* buffer, std::size_t size, std::uint64_t options);
int getattrlistat(int folder, const char* path, void* list, void* buffer, std::size_t size, unsigned long options);
int getattrlist(const char* path, void* list, void* buffer, std::size_t size, unsigned options);
