// The pcapng file format's blocks, little-endian, as Wireshark and tcpdump read them:
// a section header, interface descriptions and enhanced packets with microsecond time
// stamps. Pure bytes; no knowledge of the chip here.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace pcapng {

using Bytes = std::vector<std::uint8_t>;

// Link-layer types of the interfaces this program writes.
inline constexpr std::uint16_t kLinkTypeIso14443 = 264;  // LINKTYPE_ISO_14443
inline constexpr std::uint16_t kLinkTypeUser0 = 147;     // LINKTYPE_USER0: our own encapsulation

inline constexpr std::uint32_t kSectionHeaderType = 0x0A0D0D0A;
inline constexpr std::uint32_t kInterfaceDescriptionType = 0x00000001;
inline constexpr std::uint32_t kEnhancedPacketType = 0x00000006;
inline constexpr std::uint32_t kByteOrderMagic = 0x1A2B3C4D;

// Section header, version 1.0, section length unknown, with the writing application named.
Bytes sectionHeader(const std::string& application);
// Interface description: link type, no snapshot limit, its name, time stamps in
// microseconds (if_tsresol 6).
Bytes interfaceDescription(std::uint16_t linkType, const std::string& name);
// Enhanced packet: interface, time in microseconds since 1970, the packet, and an
// optional comment (opt_comment) that Wireshark shows with the packet.
Bytes enhancedPacket(std::uint32_t interfaceId, std::int64_t timeUs, const Bytes& data,
                     const std::string& comment = {});

}  // namespace pcapng
