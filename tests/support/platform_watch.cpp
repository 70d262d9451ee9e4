// A hook for each watched function, and the ledger they write.
#include "support/platform_watch.h"

#include <zavo.h>

#include <cstdint>
#include <mutex>
#include <set>
#include <string_view>
#include <type_traits>
#include <utility>

#include "support/import_patch.h"

namespace zavotest {
namespace {

// Kinds of what can be taken; a handle is unique among its kind.
enum class Kind : uint8_t {
  none,
  memory,
  kernelObject,
  view,
  fileName,
  module,
  tlsSlot,
  gdiObject,
  windowDC,
  clipboard
};

enum class Action : uint8_t { use, take, takeNamed, give, resize, handToSystem, lookUp };

// What a call does. `failed` is what it returns then (after a GlobalFree: anything but 0). `argument` is the position
// of the handle or name among the arguments.
struct Effect {
  Action action = Action::use;
  Kind kind = Kind::none;
  uintptr_t failed = 0;
  unsigned argument = 0;
};

constexpr uintptr_t minusOne = ~uintptr_t{0};

consteval Effect takes(Kind kind, uintptr_t failed = 0) {
  return {Action::take, kind, failed, 0};
}
consteval Effect gives(Kind kind, unsigned argument = 0) {
  return {Action::give, kind, 0, argument};
}
consteval Effect fails(uintptr_t failed) {
  return {Action::use, Kind::none, failed, 0};
}

constexpr bool isResource(const Effect& effect) {
  return effect.action == Action::take || effect.action == Action::takeNamed || effect.action == Action::resize;
}

// Guards everything below; the library's threads come here too.
std::mutex mutex;

std::map<std::pair<Kind, uintptr_t>, const char*> taken;  // by kind and handle: the function that took it

struct Plan {
  bool armed = false;
  bool anyResource = false;
  std::string function;
  unsigned callsLeft = 0;
  Repeat repeat = Repeat::once;
  const char* refused = nullptr;
};
Plan plan;

bool refuses(const char* name, bool resource) {
  const std::scoped_lock lock(mutex);
  if (!plan.armed || !(plan.anyResource ? resource : plan.function == name)) return false;
  if (plan.callsLeft > 0) --plan.callsLeft;
  if (plan.callsLeft > 0) return false;
  if (plan.refused != nullptr && plan.repeat == Repeat::once) return false;
  if (plan.refused == nullptr) plan.refused = name;
  return true;
}

// What identifies a taken thing among its kind; there is but one clipboard.
uintptr_t keyOf(const Effect& effect, uintptr_t value) {
  const bool isName = effect.kind == Kind::fileName;
  if (isName) return std::hash<std::string_view>()(reinterpret_cast<const char*>(value));
  return effect.kind == Kind::clipboard ? 0 : value;
}

void* watchedFunction(uintptr_t name, uintptr_t found);

// Enters a finished call in the ledger. Returns the call's result, which a look-up may change.
uintptr_t settle(const char* name, const Effect& effect, uintptr_t result, const uintptr_t* arguments) {
  const bool isFree = std::string_view(name) == "GlobalFree";
  const bool succeeded = isFree ? result == 0 : result != effect.failed;
  const std::scoped_lock lock(mutex);
  if (!succeeded) {
    const bool mayFail = effect.kind == Kind::fileName;
    if (effect.action == Action::give && !mayFail) ADD_FAILURE() << name << " was given something it does not know";
    return result;
  }
  switch (effect.action) {
    case Action::use:
      break;
    case Action::take:
      taken[{effect.kind, keyOf(effect, result)}] = name;
      break;
    case Action::takeNamed:
      taken[{effect.kind, keyOf(effect, arguments[effect.argument])}] = name;
      break;
    case Action::give:
      taken.erase({effect.kind, keyOf(effect, arguments[effect.argument])});
      break;
    case Action::resize:
      taken.erase({effect.kind, arguments[effect.argument]});
      taken[{effect.kind, result}] = "GlobalAlloc";
      break;
    case Action::handToSystem:
      taken.erase({Kind::memory, arguments[effect.argument]});
      taken.erase({Kind::gdiObject, arguments[effect.argument]});
      break;
    case Action::lookUp:
      return reinterpret_cast<uintptr_t>(watchedFunction(arguments[effect.argument], result));
  }
  return result;
}

template <typename T>
uintptr_t word(T value) {
  if constexpr (std::is_pointer_v<T>) {
    return reinterpret_cast<uintptr_t>(value);
  } else {
    return static_cast<uintptr_t>(value);
  }
}

template <typename T>
T fromWord(uintptr_t value) {
  if constexpr (std::is_pointer_v<T>) {
    return reinterpret_cast<T>(value);
  } else {
    return static_cast<T>(value);
  }
}

template <FunctionName name, typename Function, Effect effect>
struct Hook;

template <FunctionName name, typename Result, typename... Arguments, Effect effect>
struct Hook<name, Result(WINAPI*)(Arguments...), effect> {
  static inline void* next = nullptr;
  static inline unsigned calls = 0;

  static Result pass(Arguments... arguments) {
    const auto result = reinterpret_cast<Result(WINAPI*)(Arguments...)>(next)(arguments...);
    const DWORD error = GetLastError();
    const uintptr_t words[] = {word(arguments)..., 0};
    const auto settled = fromWord<Result>(settle(name.text, effect, word(result), words));
    SetLastError(error);
    return settled;
  }
  static Result WINAPI fromLibrary(Arguments... arguments) {
    ++calls;
    if (refuses(name.text, isResource(effect))) {
      SetLastError(ERROR_NOT_ENOUGH_MEMORY);
      return fromWord<Result>(effect.failed);
    }
    return pass(arguments...);
  }
  static Result WINAPI fromProgram(Arguments... arguments) { return pass(arguments...); }
};

struct Watched {
  const char* name;
  Effect effect;
  void* fromLibrary;
  void* fromProgram;
  void** next;
  const unsigned* calls;
};

template <FunctionName name, typename Function, Effect effect>
Watched watch() {
  using TheHook = Hook<name, Function, effect>;
  static constexpr auto kept = name;
  return {kept.text,
          effect,
          reinterpret_cast<void*>(&TheHook::fromLibrary),
          reinterpret_cast<void*>(&TheHook::fromProgram),
          &TheHook::next,
          &TheHook::calls};
}

const Watched watchedFunctions[] = {
    watch<"GlobalAlloc", decltype(&GlobalAlloc), takes(Kind::memory)>(),
    watch<"GlobalReAlloc", decltype(&GlobalReAlloc), Effect{Action::resize, Kind::memory, 0, 0}>(),
    watch<"GlobalFree", decltype(&GlobalFree), gives(Kind::memory)>(),
    watch<"GlobalLock", decltype(&GlobalLock), fails(0)>(),
    watch<"GlobalUnlock", decltype(&GlobalUnlock), Effect{}>(),
    watch<"GlobalHandle", decltype(&GlobalHandle), fails(0)>(),
    watch<"GlobalSize", decltype(&GlobalSize), fails(0)>(),
    watch<"CreateFileMappingA", decltype(&CreateFileMappingA), takes(Kind::kernelObject)>(),
    watch<"MapViewOfFile", decltype(&MapViewOfFile), takes(Kind::view)>(),
    watch<"UnmapViewOfFile", decltype(&UnmapViewOfFile), gives(Kind::view)>(),
    watch<"CreateFileA", decltype(&CreateFileA), takes(Kind::kernelObject, minusOne)>(),
    watch<"CloseHandle", decltype(&CloseHandle), gives(Kind::kernelObject)>(),
    watch<"GetTempFileNameA", decltype(&GetTempFileNameA), Effect{Action::takeNamed, Kind::fileName, 0, 3}>(),
    watch<"DeleteFileA", decltype(&DeleteFileA), gives(Kind::fileName)>(),
    watch<"ReadFile", decltype(&ReadFile), fails(0)>(),
    watch<"WriteFile", decltype(&WriteFile), fails(0)>(),
    watch<"SetFilePointer", decltype(&SetFilePointer), fails(minusOne)>(),
    watch<"SetEndOfFile", decltype(&SetEndOfFile), fails(0)>(),
    watch<"TlsAlloc", decltype(&TlsAlloc), takes(Kind::tlsSlot, minusOne)>(),
    watch<"TlsFree", decltype(&TlsFree), gives(Kind::tlsSlot)>(),
    watch<"TlsSetValue", decltype(&TlsSetValue), fails(0)>(),
    watch<"LoadLibraryA", decltype(&LoadLibraryA), takes(Kind::module)>(),
    watch<"FreeLibrary", decltype(&FreeLibrary), gives(Kind::module)>(),
    watch<"GetProcAddress", decltype(&GetProcAddress), Effect{Action::lookUp, Kind::none, 0, 1}>(),

    watch<"GetDC", decltype(&GetDC), takes(Kind::windowDC)>(),
    watch<"ReleaseDC", decltype(&ReleaseDC), gives(Kind::windowDC, 1)>(),
    watch<"OpenClipboard", decltype(&OpenClipboard), takes(Kind::clipboard)>(),
    watch<"CloseClipboard", decltype(&CloseClipboard), gives(Kind::clipboard)>(),
    watch<"SetClipboardData", decltype(&SetClipboardData), Effect{Action::handToSystem, Kind::none, 0, 1}>(),

    watch<"CreatePalette", decltype(&CreatePalette), takes(Kind::gdiObject)>(),
    watch<"CreateBitmap", decltype(&CreateBitmap), takes(Kind::gdiObject)>(),
    watch<"CreateCompatibleBitmap", decltype(&CreateCompatibleBitmap), takes(Kind::gdiObject)>(),
    watch<"CreateDIBSection", decltype(&CreateDIBSection), takes(Kind::gdiObject)>(),
    watch<"CreatePatternBrush", decltype(&CreatePatternBrush), takes(Kind::gdiObject)>(),
    watch<"CreateSolidBrush", decltype(&CreateSolidBrush), takes(Kind::gdiObject)>(),
    watch<"CreateRectRgn", decltype(&CreateRectRgn), takes(Kind::gdiObject)>(),
    watch<"CreateRectRgnIndirect", decltype(&CreateRectRgnIndirect), takes(Kind::gdiObject)>(),
    watch<"CreateRoundRectRgn", decltype(&CreateRoundRectRgn), takes(Kind::gdiObject)>(),
    watch<"CreateEllipticRgnIndirect", decltype(&CreateEllipticRgnIndirect), takes(Kind::gdiObject)>(),
    watch<"CreatePolygonRgn", decltype(&CreatePolygonRgn), takes(Kind::gdiObject)>(),
    watch<"ExtCreateRegion", decltype(&ExtCreateRegion), takes(Kind::gdiObject)>(),
    watch<"CombineRgn", decltype(&CombineRgn), fails(0)>(),
    watch<"GetRgnBox", decltype(&GetRgnBox), fails(0)>(),
    watch<"GetRegionData", decltype(&GetRegionData), fails(0)>(),
    watch<"OffsetRgn", decltype(&OffsetRgn), fails(0)>(),
    watch<"CreateCompatibleDC", decltype(&CreateCompatibleDC), takes(Kind::gdiObject)>(),
    watch<"CreateDCA", decltype(&CreateDCA), takes(Kind::gdiObject)>(),
    watch<"DeleteDC", decltype(&DeleteDC), gives(Kind::gdiObject)>(),
    watch<"DeleteObject", decltype(&DeleteObject), gives(Kind::gdiObject)>(),
    watch<"SelectObject", decltype(&SelectObject), fails(0)>(),
    watch<"SelectPalette", decltype(&SelectPalette), fails(0)>(),
    watch<"GetDIBits", decltype(&GetDIBits), fails(0)>(),
    watch<"SetDIBits", decltype(&SetDIBits), fails(0)>(),
    watch<"StretchDIBits", decltype(&StretchDIBits), fails(0)>(),
    watch<"BitBlt", decltype(&BitBlt), fails(0)>(),
};

const Watched* findWatched(std::string_view name) {
  for (const Watched& watched : watchedFunctions) {
    if (name == watched.name) return &watched;
  }
  return nullptr;
}

// A function that the library looks up at run time is watched as if it were imported.
void* watchedFunction(uintptr_t name, uintptr_t found) {
  constexpr uintptr_t lastOrdinal = 0xFFFF;
  const Watched* watched = name > lastOrdinal ? findWatched(reinterpret_cast<const char*>(name)) : nullptr;
  if (watched == nullptr) return reinterpret_cast<void*>(found);
  *watched->next = reinterpret_cast<void*>(found);
  return watched->fromLibrary;
}

bool isWatched(const std::string& function) {
  if (function == anyResource || findWatched(function) != nullptr) return true;
  ADD_FAILURE() << function << " is not watched: add it to platform_watch.cpp";
  return false;
}

// Fails a test that leaves more or less in the ledger than it found.
class BalanceOfEachTest : public testing::EmptyTestEventListener {
 public:
  void OnTestStart(const testing::TestInfo&) override { ledger = Ledger(); }
  void OnTestEnd(const testing::TestInfo&) override { EXPECT_TRUE(ledger.balanced()); }

 private:
  Ledger ledger;
};

}  // namespace

CallCount::CallCount(const std::string& function) : calls_(nullptr) {
  if (!isWatched(function)) return;
  calls_ = findWatched(function)->calls;
  before_ = *calls_;
}

unsigned CallCount::get() const {
  return calls_ != nullptr ? *calls_ - before_ : 0;
}

Refusal::Refusal(const std::string& function, unsigned n, Repeat repeat) {
  if (!isWatched(function)) return;
  const std::scoped_lock lock(mutex);
  if (plan.armed) ADD_FAILURE() << "there is another refusal";
  plan = {.armed = true,
          .anyResource = function == anyResource,
          .function = function,
          .callsLeft = n,
          .repeat = repeat,
          .refused = nullptr};
}

Refusal::~Refusal() {
  const std::scoped_lock lock(mutex);
  plan = {};
}

const char* Refusal::refused() const {
  return plan.refused;
}

Outstanding outstanding() {
  const std::scoped_lock lock(mutex);
  Outstanding counts;
  for (const auto& entry : taken) ++counts[entry.second];
  return counts;
}

testing::AssertionResult Ledger::balanced() const {
  Outstanding difference = outstanding();
  for (const auto& [function, count] : before_) difference[function] -= count;
  auto result = testing::AssertionSuccess();
  for (const auto& [function, count] : difference) {
    if (count == 0) continue;
    if (result) result = testing::AssertionFailure();
    result << function << ": " << (count > 0 ? count : -count)
           << (count > 0 ? " not given back; " : " of before given back; ");
  }
  return result;
}

void* exchangeWatched(const std::string& function, void* replacement) {
  return isWatched(function) ? std::exchange(*findWatched(function)->next, replacement) : nullptr;
}

void startPlatformWatch() {
  const HMODULE program = GetModuleHandleA(nullptr);
  for (const Watched& watched : watchedFunctions) {
    // Both sides call the same function of the platform, so either entry tells where it is.
    if (void** slot = importSlot(library(), watched.name)) *watched.next = exchangeImport(slot, watched.fromLibrary);
    const bool anothersBusiness = watched.effect.kind == Kind::tlsSlot || watched.effect.kind == Kind::module ||
                                  watched.effect.action == Action::lookUp;
    if (anothersBusiness) continue;
    if (void** slot = importSlot(program, watched.name)) *watched.next = exchangeImport(slot, watched.fromProgram);
  }
  testing::UnitTest::GetInstance()->listeners().Append(new BalanceOfEachTest);
}

}  // namespace zavotest
