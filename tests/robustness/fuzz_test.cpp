// Random calls in random order, and damaged DIBs: nothing may crash, leak, or leave a bitmap half-done. The rounds of
// script/test are always the same; script/fuzz goes on from where it is told, for as long as it is told:
// ZAVO_FUZZ_SEED is the first seed, ZAVO_FUZZ_SECONDS the time.
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>

#include "robustness/fuzz_world.h"
#include "support/crash_note.h"
#include "support/platform_watch.h"

namespace {

using namespace zavotest;

constexpr unsigned callsPerRound = 60;

unsigned fromEnvironment(const char* name, unsigned otherwise) {
  const char* text = std::getenv(name);
  return text != nullptr ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : otherwise;
}

// Runs rounds of their own seeds: a fixed number of them, or as long as the environment says. Stops at the first round
// that fails, and says how to repeat it.
void runRounds(unsigned rounds, void (*round)(unsigned seed)) {
  const unsigned first = fromEnvironment("ZAVO_FUZZ_SEED", 1);
  const unsigned seconds = fromEnvironment("ZAVO_FUZZ_SECONDS", 0);
  const DWORD start = GetTickCount();
  unsigned seed = first;
  const auto goesOn = [&] { return seconds != 0 ? GetTickCount() - start < seconds * 1000 : seed - first < rounds; };
  for (; goesOn() && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(testing::Message() << "repeat it with ZAVO_FUZZ_SEED=" << seed);
    const Ledger ledger;
    round(seed);
    EXPECT_TRUE(ledger.balanced());
  }
  setCrashNote("");
  std::printf("[ fuzzed   ] seeds %u to %u\n", first, seed - 1);
}

void callRound(unsigned seed) {
  FuzzWorld world(seed);
  std::string history;
  for (unsigned i = 0; i < callsPerRound; ++i) {
    const std::vector<FuzzCall>& calls = fuzzCalls();
    const FuzzCall& call = calls[world.below(static_cast<unsigned>(calls.size()))];
    history += history.empty() ? call.name : std::string(", ") + call.name;
    setCrashNote("ZAVO_FUZZ_SEED=" + std::to_string(seed) + ": " + history);
    call.run(world);
    world.checkBitmaps();
    if (testing::Test::HasFailure()) {
      ADD_FAILURE() << "after " << history;
      return;
    }
  }
}

// A DIB of any kind, most of its bytes right.
HGLOBAL damagedDib(std::mt19937& random) {
  constexpr WORD depths[] = {1, 4, 8, 16, 24, 32};
  const bool core = random() % 4 == 0;
  const WORD bits = depths[random() % std::size(depths)];
  const int width = 1 + static_cast<int>(random() % 40);
  const int height = 1 + static_cast<int>(random() % 20);
  std::vector<uint8_t> bytes(core ? sizeof(BITMAPCOREHEADER) : sizeof(BITMAPINFOHEADER));
  if (core) {
    const BITMAPCOREHEADER header = {sizeof header, static_cast<WORD>(width), static_cast<WORD>(height), 1, bits};
    memcpy(bytes.data(), &header, sizeof header);
  } else {
    const BITMAPINFOHEADER header = {
        sizeof header, width, random() % 2 == 0 ? height : -height, 1, bits, BI_RGB, 0, 0, 0, 0, 0};
    memcpy(bytes.data(), &header, sizeof header);
  }
  const size_t colors = bits <= 8 ? (size_t{1} << bits) * (core ? 3 : 4) : 0;
  const size_t rows = (static_cast<size_t>(width) * bits + 31) / 32 * 4 * static_cast<size_t>(height);
  const size_t headerBytes = bytes.size();
  bytes.resize(headerBytes + colors + rows);
  for (size_t i = headerBytes; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(random());
  for (unsigned changes = random() % 4; changes > 0; --changes) {
    constexpr uint8_t values[] = {0, 1, 8, 40, 0x7F, 0x80, 0xFF};
    bytes[random() % headerBytes] = random() % 2 == 0 ? values[random() % 7] : static_cast<uint8_t>(random());
  }
  if (random() % 4 == 0) bytes.resize(random() % bytes.size() + 1);
  HGLOBAL dib = GlobalAlloc(GMEM_MOVEABLE, bytes.size());
  memcpy(GlobalLock(dib), bytes.data(), bytes.size());
  GlobalUnlock(dib);
  return dib;
}

void dibRound(unsigned seed) {
  setCrashNote("ZAVO_FUZZ_SEED=" + std::to_string(seed) + ", damaged DIBs");
  std::mt19937 random(seed);
  for (int i = 0; i < 20; ++i) {
    TestBitmap bitmap;
    HGLOBAL dib = damagedDib(random);
    const auto* header = static_cast<const BITMAPINFO*>(GlobalLock(dib));
    const auto* bytes = reinterpret_cast<const uint8_t*>(header);
    const int status = Zv_ConvertFromDIB(&bitmap, header, bytes + random() % GlobalSize(dib));
    EXPECT_EQ(status == KSUCCESS, bitmap.allocated());
    GlobalUnlock(dib);
    Zv_FreeBitmap(&bitmap);
    const int changed = Zv_ChangeFromDIB(&bitmap, dib);
    EXPECT_EQ(changed == KSUCCESS, bitmap.allocated());
    if (changed != KSUCCESS) GlobalFree(dib);
  }
}

TEST(Fuzz, Calls) {
  runRounds(400, callRound);
}

TEST(Fuzz, DamagedDibs) {
  runRounds(150, dibRound);
}

}  // namespace
