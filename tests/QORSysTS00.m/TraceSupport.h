/// @file
/// Traces in the hands of the test: the clock, what the configuration says, a base directory of its own, and the plain
/// form of a line.
///
/// @code
/// class Lines : public TraceTest {};
///
/// TEST_F(Lines, AreWritten) {
///     Configure({{.destination = "f", .names = {"A"}}});
///     const TraceHandle trace("A");
///     trace->Info("text");
///     EXPECT_EQ(FileText("f"), ...);
/// }
/// @endcode
#pragma once

#include "ScratchDirectory.h"
#include "VELSysTrace.h"
#include "VELSysTraceManager.h"

#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <sys/time.h>
#include <utility>
#include <vector>

namespace TraceSupport {

/// 2026-11-15T11:18:27.
inline constexpr std::time_t FixedTime = 1794741507;

/// What the companion's timer answers; it fails without.
inline std::optional<timeval> timer = timeval{FixedTime, 123456};
/// What `time` answers.
inline std::time_t plainTime = FixedTime;
/// Whether the system's clocks are asked instead.
inline bool usesSystemClocks = false;

/// A configuration item.
struct Item {
    std::string destination;
    std::vector<std::string> names = {};
    std::vector<std::pair<int, int>> options = {}; ///< Of VELSysTraceOption, with their values.
    int kind = VELSysTraceKindStream;
};

using Items = std::vector<Item>;

/// What the three sources of a configuration say; a source without items fails, as it does when it isn't there.
struct Sources {
    std::optional<Items> text = {};
    std::optional<Items> variable = {};
    std::optional<Items> files = {};
};

inline std::optional<Sources> sources = {}; ///< The library's own without.
inline std::vector<std::string> asked = {}; ///< The sources that were asked, in order, the text with its text.

/// Makes the manager with these items. @return What its creation answers.
int Configure(const Items& items);

/// What the library asks the system, where the test answers instead.
inline std::function<std::optional<int>(const std::string& path)> insideStat = {};
inline std::function<std::optional<int>(const std::string& path, unsigned int mode)> insideMakeDirectory = {};

/// Where a trace's lines are formed.
struct LineParts {
    int level = VELSysTraceNoLevel;
    std::string tag = {};
    int code = 0;
    std::optional<std::pair<std::string, int>> source = {};
    unsigned int options = 63;
    bool isLocalTime = false;
};

/// A time stamp in the plain form.
std::string PlainStamp(std::time_t seconds, std::optional<long> microseconds, bool isLocalTime);
/// What stands between mark and message, at the present of the test's clock and on this thread.
std::string PlainPrefix(const LineParts& parts);
std::string PlainLine(const LineParts& parts, const std::string& message, const std::string& terminator = "\n");

/// A handle of the usual call site.
class TraceHandle {
public:
    explicit TraceHandle(const char* name) { VELSysTraceCreate__(&_handle, name); }
    TraceHandle(const TraceHandle&) = delete;
    TraceHandle& operator=(const TraceHandle&) = delete;
    ~TraceHandle() { VELSysTraceDestroy__(&_handle); }

    explicit operator bool() const { return _handle != nullptr; }
    VELSysTrace* operator->() const { return static_cast<VELSysTrace*>(_handle); }
    VELSysTrace& operator*() const { return *static_cast<VELSysTrace*>(_handle); }
    /// As the older set of writers has it.
    VELSysQORTrace* Writer() const { return reinterpret_cast<VELSysQORTrace*>(_handle); }

private:
    void* _handle = nullptr;
};

/// A destination's inside.
struct DestinationPeek : VELSysTraceObjBase {
    template <class Member>
    static Member& At(VELSysTraceObjBase& destination, Member VELSysTraceObjBase::*member) {
        return destination.*member;
    }
    static VELSysTraceKind Kind(VELSysTraceObjBase& o) { return At(o, &DestinationPeek::_kind); }
    static std::string Name(VELSysTraceObjBase& o) { return o.*(&DestinationPeek::_destination); }
    static unsigned int Users(VELSysTraceObjBase& o) { return At(o, &DestinationPeek::_users); }
    static unsigned int Mode(VELSysTraceObjBase& o) { return At(o, &DestinationPeek::_mode); }
    static int MaximumCode(VELSysTraceObjBase& o) { return At(o, &DestinationPeek::_maximumCode); }
    static int MinimumCode(VELSysTraceObjBase& o) { return At(o, &DestinationPeek::_minimumCode); }
    static unsigned int MemorySize(VELSysTraceObjBase& o) { return At(o, &DestinationPeek::_memorySize); }
    static bool IsActive(VELSysTraceObjBase& o) { return At(o, &DestinationPeek::_isActive); }
    static bool IsEnabled(VELSysTraceObjBase& o) { return At(o, &DestinationPeek::_isEnabled); }
    static bool IsOpen(VELSysTraceObjBase& o) { return At(o, &DestinationPeek::_isOpen); }
    static bool IsLocalTime(VELSysTraceObjBase& o) { return At(o, &DestinationPeek::_isLocalTime); }
    static unsigned long RotateSize(VELSysTraceObjBase& o) { return At(o, &DestinationPeek::_rotateSize); }
    static unsigned long RotateCount(VELSysTraceObjBase& o) { return At(o, &DestinationPeek::_rotateCount); }
    static int NextName(VELSysTraceObjBase& o) { return At(o, &DestinationPeek::_nextName); }
    static std::vector<std::string> Names(VELSysTraceObjBase& o);
    static std::string Prefix(VELSysTraceObjBase& o, const VELSysTraceLineOptions& line);
    static std::string LastPrefix(VELSysTraceObjBase& o) { return o.*(&DestinationPeek::_prefix); }
};

/// The destination in a slot of the manager in use, null for none.
VELSysTraceObjBase* DestinationAt(int slot);
/// The destination of that name, which must be there.
VELSysTraceObjBase& DestinationOf(const std::string& name);
/// The names of the destinations, from the last slot to the first.
std::vector<std::string> Destinations();

/// The directory of this process's files at the test's time, below a base directory.
std::filesystem::path ProcessDirectoryIn(const std::filesystem::path& base);

/// Tests with a base directory of their own, at a fixed time.
class TraceTest : public ScratchTest {
protected:
    void SetUp() override;
    void TearDown() override;

    std::filesystem::path BaseDirectory() const { return scratch / "VELSysTrace"; }
    std::filesystem::path ProcessDirectory() const { return ProcessDirectoryIn(scratch.Path()); }
    std::filesystem::path File(const std::string& name) const { return ProcessDirectory() / name; }
    std::string FileText(const std::string& name) const { return ReadFile(File(name)); }
};

} // namespace TraceSupport
