// Network conversions: "_ping" and "_hostname" look their hosts up in
// parallel, one POSIX thread per host, and "_ipaddress" resolves names one
// after the other. Workers write only their own slot; every thread started
// is joined before the conversion returns.
#include <pthread.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "companion/libKXUtils.h"
#include "convert/convert_internal.h"
#include "convert/paths.h"
#include "kx_convert.h"

extern "C" {
PingThreadSlot *PingThreadInfo = nullptr;
HostnameThreadSlot *HostnameThreadInfo = nullptr;
int PingRepeat = 0;
int HostnameRepeat = 0;
}

namespace kx::convert {
namespace {

// At most this many look-up threads run at once; longer host lists are
// worked through in rounds of this size, still one thread per host.
constexpr std::size_t kThreadsAtOnce = 64;
constexpr char kUnknown[] = "Unknown";

// The counters are plain ints to their readers; workers change them
// atomically, so that no decrement is lost.
void CountUp(int &counter) { __atomic_add_fetch(&counter, 1, __ATOMIC_RELAXED); }
void CountDown(int &counter) { __atomic_sub_fetch(&counter, 1, __ATOMIC_RELAXED); }

void *SlotArgument(std::size_t index) { return reinterpret_cast<void *>(static_cast<std::uintptr_t>(index)); }

std::size_t SlotIndex(void *argument) { return static_cast<std::size_t>(reinterpret_cast<std::uintptr_t>(argument)); }

// Starts entry(i) for each slot that wants it, kThreadsAtOnce at a time;
// a slot whose thread cannot be created or joined is served by direct()
// in the calling thread.
template <typename Wants, typename Direct>
void RunSlots(std::size_t count, void *(*entry)(void *), Wants wants, Direct direct) {
    for (std::size_t first = 0; first < count; first += kThreadsAtOnce) {
        const std::size_t last = std::min(count, first + kThreadsAtOnce);
        std::vector<std::optional<pthread_t>> threads(last - first);
        for (std::size_t i = first; i < last; ++i) {
            if (!wants(i)) continue;
            pthread_t thread;
            if (pthread_create(&thread, nullptr, entry, SlotArgument(i)) == 0)
                threads[i - first] = thread;
            else
                direct(i, true);
        }
        for (std::size_t i = first; i < last; ++i)
            if (threads[i - first] && pthread_join(*threads[i - first], nullptr) != 0) direct(i, false);
    }
}

std::vector<std::string> DecodedHosts(const char *value) {
    std::vector<std::string> hosts;
    for (std::string_view host : Split(value, "|")) hosts.push_back(Decoded(host));
    return hosts;
}

// The separator after the argument's first character, or fallback.
std::string SeparatorOf(const char *argument, std::string_view fallback) {
    const std::string_view text = ValueText(argument);
    return std::string(text.size() > 1 ? text.substr(1) : fallback);
}

void PingSlot(std::size_t i) {
    PingThreadInfo[i].Status = KXUtilsPing(PingThreadInfo[i].Host, 1, 1000, -1, -1, 0);
    CountDown(PingRepeat);
}

void NameSlot(std::size_t i) {
    HostnameThreadInfo[i].Name = _GetHostnameByNetAddress(HostnameThreadInfo[i].Address);
    CountDown(HostnameRepeat);
}

// The "_hostname," argument: output separator and the look-up flags.
struct NameOptions {
    std::string separator;
    std::optional<std::vector<std::string>> flags;
};

NameOptions NameOptionsOf(const char *argument, int cycleIndex) {
    NameOptions options;
    const std::string_view text = ValueText(argument);
    if (text.empty()) return options;
    const std::string evaluated = Evaluated(text.substr(1), cycleIndex, "|");
    const Cut parts = CutAt(evaluated, ',');
    options.separator = parts.head;
    if (parts.hasRest) {
        options.flags.emplace();
        const std::string flags = Decoded(parts.rest);
        for (std::string_view flag : Split(flags, "|")) options.flags->emplace_back(flag);
    }
    return options;
}

bool WantsLookUp(const NameOptions &options, std::size_t i) {
    if (!options.flags || i >= options.flags->size()) return true;
    return !(*options.flags)[i].empty() && (*options.flags)[i].front() == 'y';
}

}  // namespace
}  // namespace kx::convert

using namespace kx::convert;

extern "C" {

void *PingThread(void *index) {
    PingSlot(SlotIndex(index));
    return nullptr;
}

void *HostnameThread(void *index) {
    NameSlot(SlotIndex(index));
    return nullptr;
}

char *ConvertPing(char *argument, char *value, int) {
    if (value == nullptr) return HeapCopy("0");
    std::vector<std::string> hosts = DecodedHosts(value);
    std::vector<PingThreadSlot> slots(hosts.size());
    for (std::size_t i = 0; i < hosts.size(); ++i) slots[i] = {hosts[i].data(), -1};
    PingThreadInfo = slots.data();
    RunSlots(
        slots.size(), PingThread, [](std::size_t) { CountUp(PingRepeat); return true; },
        [&](std::size_t i, bool created) { if (created || slots[i].Status == -1) PingSlot(i); });
    std::string result;
    const std::string separator = SeparatorOf(argument, "|");
    for (std::size_t i = 0; i < slots.size(); ++i)
        result.append(i > 0 ? separator : "").append(slots[i].Status == 0 ? "1" : "0");
    PingThreadInfo = nullptr;
    return HeapCopy(result);
}

char *ConvertToHostname(char *argument, char *value, int cycleIndex) {
    if (value == nullptr) return HeapCopy(kUnknown);
    const NameOptions options = NameOptionsOf(argument, cycleIndex);
    std::vector<std::string> addresses = DecodedHosts(value);
    std::vector<HostnameThreadSlot> slots(addresses.size(), HostnameThreadSlot{nullptr, nullptr});
    HostnameThreadInfo = slots.data();
    RunSlots(
        slots.size(), HostnameThread,
        [&](std::size_t i) {
            if (!WantsLookUp(options, i)) return false;
            slots[i].Address = addresses[i].data();
            CountUp(HostnameRepeat);
            return true;
        },
        [&](std::size_t i, bool created) { if (created || slots[i].Name == nullptr) NameSlot(i); });
    std::string result;
    const std::string separator = options.separator.empty() ? "|" : options.separator;
    for (std::size_t i = 0; i < slots.size(); ++i) {
        if (i > 0) result += separator;
        result += slots[i].Address == nullptr ? "" : slots[i].Name != nullptr ? slots[i].Name : kUnknown;
        KXUtilsFreeResources(slots[i].Name);
    }
    HostnameThreadInfo = nullptr;
    return HeapCopy(result);
}

char *ConvertToIPAddress(char *, char *value, int) {
    if (value == nullptr) return HeapCopy(kUnknown);
    std::string result;
    for (const std::string &name : DecodedHosts(value)) {
        char *address = _GetNetAddressByHostname(name.c_str());
        result.append(address ? address : kUnknown).append("|");
        KXUtilsFreeResources(address);
    }
    result.pop_back();  // the bar after the last; a split gives at least one name
    return HeapCopy(result);
}

}  // extern "C"
