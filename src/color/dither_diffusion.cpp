// Error diffusion with the channels of a pixel in one vector register. The sums from the rows above are gathered for a
// whole row at once; then each pixel waits for the error of the one before it alone.
#include <emmintrin.h>

#include "color/dither_rows.h"

namespace zavo {
namespace {

// --- Division toward zero

// Of a 16-bit sum: (sum * factor >> 16 >> shift) + (sum < 0).
struct Reciprocal {
  int factor, shift;
};

constexpr bool isExact(const Reciprocal& r, const Kernel& kernel) {
  for (int sum = -largestSum(kernel); sum <= largestSum(kernel); ++sum) {
    if ((sum * r.factor >> 16 >> r.shift) + (sum < 0 ? 1 : 0) != sum / kernel.divisor) return false;
  }
  return true;
}

// The smallest shift that gives exact quotients for all sums of a kernel. The factor is rounded up.
consteval Reciprocal reciprocalOf(const Kernel& kernel) {
  Reciprocal r{65536 / kernel.divisor + 1, 0};
  while (!isExact(r, kernel)) {
    ++r.shift;
    r.factor = (65536 << r.shift) / kernel.divisor + 1;
  }
  return r;
}

// Of a longer sum: the whole part of sum * factor. A little more than 1 / divisor, so that multiples of the divisor do
// not come out below their quotient.
constexpr float factorOf(const Kernel& kernel) {
  return 1.00001f / static_cast<float>(kernel.divisor);
}

constexpr bool isExact(float factor, const Kernel& kernel) {
  for (int sum = -largestSum(kernel); sum <= largestSum(kernel); ++sum) {
    if (static_cast<int>(static_cast<float>(sum) * factor) != sum / kernel.divisor) return false;
  }
  return true;
}

// --- Sums. Those of 16 bits multiply by shifting and adding, those of 32 bits two taps at a time.

// sum + weight * errors
template <int weight>
__m128i addTimes(__m128i sum, __m128i errors) {
  if constexpr (weight == 0) return sum;
  if constexpr (weight == 1) return _mm_add_epi16(sum, errors);
  if constexpr (weight == 2) return _mm_add_epi16(sum, _mm_slli_epi16(errors, 1));
  if constexpr (weight == 3) return _mm_add_epi16(_mm_add_epi16(sum, errors), _mm_slli_epi16(errors, 1));
  if constexpr (weight == 4) return _mm_add_epi16(sum, _mm_slli_epi16(errors, 2));
  if constexpr (weight == 5) return _mm_add_epi16(_mm_add_epi16(sum, errors), _mm_slli_epi16(errors, 2));
  if constexpr (weight == 7) return _mm_add_epi16(_mm_sub_epi16(sum, errors), _mm_slli_epi16(errors, 3));
  if constexpr (weight == 8) return _mm_add_epi16(sum, _mm_slli_epi16(errors, 3));
}

struct Tap {
  int row, dx, weight;
};

struct Taps {
  Tap taps[22];  // an even number; one more of weight 0 makes it so
  size_t count;
};

consteval Taps tapsOf(const Kernel& kernel) {
  Taps result{};
  for (int row = 0; row < 3; ++row) {
    for (int dx = -3; dx <= 3; ++dx) {
      const int weight = kernel.below[row][dx + 3];
      if (weight != 0) result.taps[result.count++] = {row, dx, weight};
    }
  }
  result.count += result.count % 2;
  return result;
}

// The errors of 8 samples that a tap carries to those at `sample`.
template <int lanes>
__m128i tapErrors(const ErrorRows& errors, const Tap& tap, size_t sample) {
  const int16_t* from = errors.rows[tap.row + 1] + sample - tap.dx * lanes;
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

constexpr int pairOf(int low, int high) {
  return high * 65536 + low;
}

template <int method, int lanes>
void storeEightSums(int16_t* sums, const ErrorRows& errors, size_t sample) {
  constexpr Taps taps = tapsOf(kernelOf<method>);
  __m128i sum = _mm_setzero_si128();
  [&]<size_t... i>(std::index_sequence<i...>) {
    ((sum = addTimes<taps.taps[i].weight>(sum, tapErrors<lanes>(errors, taps.taps[i], sample))), ...);
  }
  (std::make_index_sequence<taps.count>{});
  _mm_storeu_si128(reinterpret_cast<__m128i*>(sums + sample), sum);
}

template <int method, int lanes>
void storeEightSums(int32_t* sums, const ErrorRows& errors, size_t sample) {
  constexpr Taps taps = tapsOf(kernelOf<method>);
  __m128i low = _mm_setzero_si128(), high = low;
  for (size_t i = 0; i < taps.count; i += 2) {
    const __m128i weights = _mm_set1_epi32(pairOf(taps.taps[i].weight, taps.taps[i + 1].weight));
    const __m128i a = tapErrors<lanes>(errors, taps.taps[i], sample);
    const __m128i b = tapErrors<lanes>(errors, taps.taps[i + 1], sample);
    low = _mm_add_epi32(low, _mm_madd_epi16(_mm_unpacklo_epi16(a, b), weights));
    high = _mm_add_epi32(high, _mm_madd_epi16(_mm_unpackhi_epi16(a, b), weights));
  }
  _mm_storeu_si128(reinterpret_cast<__m128i*>(sums + sample), low);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(sums + sample + 4), high);
}

// What is carried to a pixel, divided, and what must be added to it for the rounding toward zero. `sums` come from the
// rows above; then the errors of the last pixel and the one before it.
struct Carried {
  __m128i quotient, correction;
};

template <int method>
Carried carry(const int16_t* sums, __m128i last, __m128i lastButOne) {
  constexpr Kernel kernel = kernelOf<method>;
  constexpr Reciprocal r = reciprocalOf(kernelOf<method>);
  static_assert(r.factor <= INT16_MAX);
  const __m128i above = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(sums));
  const __m128i sum = addTimes<kernel.ahead[0]>(addTimes<kernel.ahead[1]>(above, lastButOne), last);
  const __m128i product = _mm_mulhi_epi16(sum, _mm_set1_epi16(static_cast<short>(r.factor)));
  return {r.shift == 0 ? product : _mm_srai_epi16(product, r.shift), _mm_srli_epi16(sum, 15)};
}

template <int method>
Carried carry(const int32_t* sums, __m128i last, __m128i lastButOne) {
  constexpr Kernel kernel = kernelOf<method>;
  static_assert(isExact(factorOf(kernel), kernel));
  const __m128i above = _mm_loadu_si128(reinterpret_cast<const __m128i*>(sums));
  const __m128i weights = _mm_set1_epi32(pairOf(kernel.ahead[0], kernel.ahead[1]));
  // Without a weight for the last pixel, its error need not be waited for.
  const __m128i first = kernel.ahead[0] == 0 ? _mm_setzero_si128() : last;
  const __m128i sum = _mm_add_epi32(above, _mm_madd_epi16(_mm_unpacklo_epi16(first, lastButOne), weights));
  const __m128i quotient = _mm_cvttps_epi32(_mm_mul_ps(_mm_cvtepi32_ps(sum), _mm_set1_ps(factorOf(kernel))));
  return {_mm_packs_epi32(quotient, quotient), _mm_setzero_si128()};
}

// --- Quantisers of a pixel whose channels, 0 to 255, are the low bytes of the low four lanes, bit 15 of which is set;
// they give the index and the error

// Even levels: the top bits h of a channel stand for the level h + h * factor / 65536.
class LevelLanes {
 public:
  explicit LevelLanes(const DitherTarget& target) : LevelLanes(channelBits(target.kind)) {}

  __m128i operator()(__m128i values, uint8_t& index) const {
    const __m128i top = _mm_and_si128(values, topBits_);
    const __m128i pairs = _mm_madd_epi16(top, places_);
    const __m128i sum = _mm_add_epi32(pairs, _mm_srli_epi64(pairs, 32));
    index = static_cast<uint8_t>(_mm_cvtsi128_si32(sum) >> shift_);
    return _mm_sub_epi16(_mm_and_si128(values, lowBits_), _mm_mulhi_epu16(top, factors_));
  }

 private:
  explicit LevelLanes(ChannelBits bits)
      : topBits_(lanes(topBits(bits.blue), topBits(bits.green), topBits(bits.red))),
        lowBits_(_mm_andnot_si128(topBits_, _mm_set1_epi16(255))),
        factors_(lanes(factor(bits.blue), factor(bits.green), factor(bits.red))),
        places_(lanes(1, 1 << bits.green, 1 << (bits.green + bits.red))),
        shift_(8 - bits.blue) {}

  static __m128i lanes(int blue, int green, int red) {
    return _mm_setr_epi16(static_cast<short>(blue), static_cast<short>(green), static_cast<short>(red), 0, 0, 0, 0, 0);
  }
  static int topBits(int bits) { return 256 - (256 >> bits); }
  // Levels are k * 255 / (2^bits - 1), rounded; what they are above k * 256 / 2^bits is a fraction of that.
  static int factor(int bits) {
    constexpr int factors[] = {0, 127 * 512, 21 * 1024, 9 * 1024};
    return factors[bits];
  }

  __m128i topBits_, lowBits_, factors_, places_;
  int shift_;
};

// Any other target: through its plain quantiser.
template <typename Quantiser>
class EntryLanes {
 public:
  explicit EntryLanes(DitherTarget& target) : lanes_(target.lanes), quantise_(target) {}

  __m128i operator()(__m128i values, uint8_t& index) const {
    values = _mm_and_si128(values, _mm_set1_epi16(255));
    const uint8_t entry = quantise_(static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(values, values))));
    index = entry;
    return _mm_sub_epi16(values, _mm_loadl_epi64(reinterpret_cast<const __m128i*>(lanes_[entry])));
  }

 private:
  const int16_t (*lanes_)[4];
  const Quantiser quantise_;
};

// Black and white or four greys: the level rises at each threshold that the brightness reaches.
class BrightnessLanes {
 public:
  explicit BrightnessLanes(const DitherTarget& target) {
    const bool two = target.kind == fixedKind(1);
    step_ = _mm_set1_epi16(two ? 255 : 85);
    for (int i = 0; i < 3; ++i)
      below_[i] = _mm_set1_epi32(two ? lastBelow(i == 0 ? 128 : 256) : lastBelow(64 * (i + 1)));
  }

  __m128i operator()(__m128i values, uint8_t& index) const {
    values = _mm_and_si128(values, _mm_set1_epi16(255));
    const __m128i parts = _mm_madd_epi16(values, _mm_setr_epi16(1, 5, 2, 0, 0, 0, 0, 0));
    // In both words, so that the comparison fills all four lanes.
    const __m128i sum = _mm_add_epi32(parts, _mm_shuffle_epi32(parts, _MM_SHUFFLE(2, 3, 0, 1)));
    const __m128i reached =
        _mm_add_epi16(_mm_add_epi16(_mm_cmpgt_epi32(sum, below_[0]), _mm_cmpgt_epi32(sum, below_[1])),
                      _mm_cmpgt_epi32(sum, below_[2]));
    index = static_cast<uint8_t>(-_mm_cvtsi128_si32(reached));
    return _mm_add_epi16(values, _mm_mullo_epi16(reached, step_));
  }

 private:
  // The largest 2 red + 5 green + blue whose brightness is below a level.
  static int lastBelow(int level) { return 8 * level - 5; }

  __m128i below_[3], step_;
};

class CubeLanes {
 public:
  explicit CubeLanes(const DitherTarget&) {}

  __m128i operator()(__m128i values, uint8_t& index) const {
    values = _mm_and_si128(values, _mm_setr_epi16(255, 255, 255, 0, 0, 0, 0, 0));
    // value / 51
    const __m128i levels = _mm_mulhi_epi16(values, _mm_set1_epi16(65536 / 51 + 1));
    const __m128i pairs = _mm_madd_epi16(levels, _mm_setr_epi16(1, 6, 36, 0, 0, 0, 0, 0));
    index = static_cast<uint8_t>(_mm_cvtsi128_si32(_mm_add_epi32(pairs, _mm_srli_epi64(pairs, 32))));
    return _mm_sub_epi16(values, _mm_mullo_epi16(levels, _mm_set1_epi16(51)));
  }
};

template <typename Quantiser>
struct LanesOf {
  using Type = EntryLanes<Quantiser>;
};
template <>
struct LanesOf<LevelsQuantiser> {
  using Type = LevelLanes;
};
template <>
struct LanesOf<BrightnessQuantiser> {
  using Type = BrightnessLanes;
};
template <>
struct LanesOf<CubeQuantiser> {
  using Type = CubeLanes;
};

template <int method, typename Quantiser>
void diffuseColors(DitherRun& run, uint8_t* indexes, const uint8_t* pixels) {
  const unsigned width = run.width;
  auto* sums = static_cast<Sum<method>*>(run.sums);
  vectorSums<method, 4>(sums, run.errors, size_t{width} * 4);
  const typename LanesOf<Quantiser>::Type quantise(run.target);
  // With 0 at the lowest number, one saturating addition clamps values to it on the way.
  const __m128i floor = _mm_set1_epi16(INT16_MIN);
  const __m128i ceiling = _mm_set1_epi16(INT16_MIN + 255);
  const __m128i zero = _mm_setzero_si128();
  int16_t* errors = run.errors.rows[0];
  __m128i last = zero, lastButOne = zero;
  for (size_t x = 0; x < width; ++x) {
    const Carried carried = carry<method>(sums + x * 4, last, lastButOne);
    int bytes;
    __builtin_memcpy(&bytes, pixels + x * 4, 4);
    const __m128i pixel = _mm_or_si128(_mm_unpacklo_epi8(_mm_cvtsi32_si128(bytes), zero), floor);
    const __m128i sum = _mm_adds_epi16(carried.quotient, _mm_add_epi16(pixel, carried.correction));
    lastButOne = last;
    last = quantise(_mm_min_epi16(sum, ceiling), indexes[x]);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(errors + x * 4), last);
  }
  run.errors.roll();
}

template <typename Quantiser>
constexpr DitherRowFunction functions[] = {diffuseColors<1, Quantiser>, diffuseColors<2, Quantiser>,
                                           diffuseColors<3, Quantiser>, diffuseColors<4, Quantiser>,
                                           diffuseColors<5, Quantiser>, diffuseColors<6, Quantiser>};

}  // namespace

template <int method, int lanes>
void vectorSums(Sum<method>* sums, const ErrorRows& errors, size_t samples) {
  size_t i = 0;
  for (; i + 8 <= samples; i += 8) storeEightSums<method, lanes>(sums, errors, i);
  for (; i < samples; ++i) sums[i] = static_cast<Sum<method>>(sumFromAbove<method, lanes>(errors, i));
}

template void vectorSums<1, 1>(Sum<1>*, const ErrorRows&, size_t);
template void vectorSums<2, 1>(Sum<2>*, const ErrorRows&, size_t);
template void vectorSums<3, 1>(Sum<3>*, const ErrorRows&, size_t);
template void vectorSums<4, 1>(Sum<4>*, const ErrorRows&, size_t);
template void vectorSums<5, 1>(Sum<5>*, const ErrorRows&, size_t);
template void vectorSums<6, 1>(Sum<6>*, const ErrorRows&, size_t);

DitherRowFunction colorDiffusion(int method, int kind) {
  return chooseByQuantiser(kind, [&]<typename Quantiser>() { return functions<Quantiser>[method - 1]; });
}

}  // namespace zavo
