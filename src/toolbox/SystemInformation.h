// Finding the platform's own system information tool for the About box. There is no
// registry entry to read here, so the candidates are the usual desktop tools, looked for
// on the program search path in order of preference.
#pragma once

#include <array>
#include <functional>
#include <string>

namespace toolbox {

inline constexpr const char* kSysInfoNotAvailable = "System Information are not available now";

// Tools that show the machine's hardware and system, the closest first.
inline constexpr std::array<const char*, 9> kSystemInformationTools{
    "hardinfo2", "hardinfo", "kinfocenter", "gnome-system-monitor", "plasma-systemmonitor",
    "mate-system-monitor",   "ksysguard", "xfce4-taskmanager", "lxtask"};

// Given a lookup that returns the full path of a program name (empty when absent), the
// path of the first candidate found, or an empty text.
std::string findSystemInformationTool(const std::function<std::string(const std::string&)>& locate);
// The same through the program search path (PATH).
std::string findSystemInformationToolInPath();

}  // namespace toolbox
