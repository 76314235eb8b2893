// The file attribute bits that the library looks at.

#ifndef QUASTEL_PLATFORM_ATTRIBUTES_H_
#define QUASTEL_PLATFORM_ATTRIBUTES_H_

#include <cstdint>

namespace quastel::platform {

using Attributes = std::uint32_t;

inline constexpr Attributes kAttributeReadOnly = 0x1;
inline constexpr Attributes kAttributeHidden = 0x2;
inline constexpr Attributes kAttributeSystem = 0x4;
inline constexpr Attributes kAttributeDirectory = 0x10;
inline constexpr Attributes kAttributeArchive = 0x20;
inline constexpr Attributes kAttributeNormal = 0x80;
inline constexpr Attributes kAttributeReparsePoint = 0x400;
inline constexpr Attributes kAttributeOffline = 0x1000;
inline constexpr Attributes kAttributesInvalid = 0xFFFFFFFF;

constexpr bool IsDirectory(Attributes attributes) {
  return (attributes & kAttributeDirectory) != 0;
}

// A failed query's all-ones value has the bit set but says nothing about the entry.
constexpr bool IsReparsePoint(Attributes attributes) {
  return attributes != kAttributesInvalid && (attributes & kAttributeReparsePoint) != 0;
}

}  // namespace quastel::platform

#endif  // QUASTEL_PLATFORM_ATTRIBUTES_H_
