// Error diffusion with the channels of a pixel in one vector register: the same bytes as the plain functions. The sums
// from the rows above are gathered for a whole row at once; then each pixel waits for the error of the one before it
// alone.
#include <emmintrin.h>

#include "color/dither_rows.h"

namespace zavo {
namespace {

// --- Division of a 16-bit sum toward zero: (sum * factor >> 16 >> shift) + (sum < 0)

struct Reciprocal {
  int factor, shift;
};

constexpr int divide(const Reciprocal& r, int sum) {
  return (sum * r.factor >> 16 >> r.shift) + (sum < 0 ? 1 : 0);
}

constexpr bool isExact(const Reciprocal& r, int divisor) {
  for (int sum = -255 * divisor; sum <= 255 * divisor; ++sum) {
    if (divide(r, sum) != sum / divisor) return false;
  }
  return true;
}

// The smallest shift that gives exact quotients for all sums of a kernel. The factor is rounded up.
consteval Reciprocal reciprocalOf(int divisor) {
  Reciprocal r{65536 / divisor + 1, 0};
  while (!isExact(r, divisor)) {
    ++r.shift;
    r.factor = (65536 << r.shift) / divisor + 1;
  }
  return r;
}

template <int method>
constexpr Reciprocal reciprocal = reciprocalOf(kernelOf<method>.divisor);

template <int method>
__m128i divideSums(__m128i sums) {
  constexpr Reciprocal r = reciprocal<method>;
  static_assert(r.factor <= INT16_MAX);
  const __m128i product = _mm_mulhi_epi16(sums, _mm_set1_epi16(static_cast<short>(r.factor)));
  return r.shift == 0 ? product : _mm_srai_epi16(product, r.shift);
}

// --- Products by a small weight

template <int weight>
__m128i times(__m128i errors) {
  if constexpr (weight == 0) return _mm_setzero_si128();
  if constexpr (weight == 1) return errors;
  if constexpr (weight == 2) return _mm_slli_epi16(errors, 1);
  if constexpr (weight == 4) return _mm_slli_epi16(errors, 2);
  if constexpr (weight == 5) return _mm_add_epi16(_mm_slli_epi16(errors, 2), errors);
  if constexpr (weight == 7) return _mm_sub_epi16(_mm_slli_epi16(errors, 3), errors);
  if constexpr (weight == 8) return _mm_slli_epi16(errors, 3);
  return _mm_mullo_epi16(errors, _mm_set1_epi16(weight));
}

// What the rows above carry to 8 samples.
template <int method, int lanes>
__m128i eightSums(const ErrorRows& errors, size_t sample) {
  constexpr Kernel kernel = kernelOf<method>;
  __m128i sum = _mm_setzero_si128();
  const auto add = [&]<size_t tap>() {
    constexpr int row = tap / 7, dx = static_cast<int>(tap % 7) - 3, weight = kernel.below[row][tap % 7];
    if constexpr (weight != 0) {
      const int16_t* from = errors.rows[row + 1] + sample - dx * lanes;
      const __m128i reached = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
      sum = _mm_add_epi16(sum, times<weight>(reached));
    }
  };
  [&]<size_t... taps>(std::index_sequence<taps...>) {
    (add.template operator()<taps>(), ...);
  }
  (std::make_index_sequence<21>{});
  return sum;
}

// --- Quantisers of a pixel whose channels, 0 to 255, are the low bytes of the low four lanes, bit 15 of which is set;
// they give the index and the error

// Even levels: the top bits h of a channel stand for the level h + h * factor / 65536.
class LevelLanes {
 public:
  explicit LevelLanes(const DitherTarget& target) {
    const ChannelBits bits = channelBits(target.kind);
    topBits_ = lanes(topBits(bits.blue), topBits(bits.green), topBits(bits.red));
    lowBits_ = _mm_andnot_si128(topBits_, _mm_set1_epi16(255));
    factors_ = lanes(factor(bits.blue), factor(bits.green), factor(bits.red));
    places_ = lanes(1, 1 << bits.green, 1 << (bits.green + bits.red));
    shift_ = 8 - bits.blue;
  }

  __m128i operator()(__m128i values, uint8_t& index) const {
    const __m128i top = _mm_and_si128(values, topBits_);
    const __m128i pairs = _mm_madd_epi16(top, places_);
    const __m128i sum = _mm_add_epi32(pairs, _mm_srli_epi64(pairs, 32));
    index = static_cast<uint8_t>(_mm_cvtsi128_si32(sum) >> shift_);
    return _mm_sub_epi16(_mm_and_si128(values, lowBits_), _mm_mulhi_epu16(top, factors_));
  }

 private:
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
  explicit EntryLanes(const DitherTarget& target) : target_(target), quantise_(target) {}

  __m128i operator()(__m128i values, uint8_t& index) const {
    values = _mm_and_si128(values, _mm_set1_epi16(255));
    index = quantise_(static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(values, values))));
    return _mm_sub_epi16(values, _mm_loadl_epi64(reinterpret_cast<const __m128i*>(target_.lanes[index])));
  }

 private:
  const DitherTarget& target_;
  const Quantiser quantise_;
};

template <typename Quantiser>
struct LanesOf {
  using Type = EntryLanes<Quantiser>;
};
template <>
struct LanesOf<LevelsQuantiser> {
  using Type = LevelLanes;
};

template <int method, typename Quantiser>
void diffuseColors(DitherRun& run, uint8_t* indexes, const uint8_t* pixels) {
  constexpr Kernel kernel = kernelOf<method>;
  vectorSums<method, 4>(run.sums, run.errors, size_t{run.width} * 4);
  const typename LanesOf<Quantiser>::Type quantise(run.target);
  // With 0 at the lowest number, one saturating addition clamps values to it on the way.
  const __m128i floor = _mm_set1_epi16(INT16_MIN);
  const __m128i ceiling = _mm_set1_epi16(INT16_MIN + 255);
  const __m128i zero = _mm_setzero_si128();
  int16_t* errors = run.errors.rows[0];
  __m128i last = zero, lastButOne = zero;
  for (unsigned x = 0; x < run.width; ++x) {
    __m128i base = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(run.sums + size_t{x} * 4));
    base = _mm_add_epi16(base, times<kernel.ahead[1]>(lastButOne));
    const __m128i sums = _mm_add_epi16(base, times<kernel.ahead[0]>(last));
    int bytes;
    __builtin_memcpy(&bytes, pixels + size_t{x} * 4, 4);
    const __m128i pixel = _mm_or_si128(_mm_unpacklo_epi8(_mm_cvtsi32_si128(bytes), zero), floor);
    const __m128i towardZero = _mm_sub_epi16(pixel, _mm_srai_epi16(sums, 15));
    const __m128i values = _mm_min_epi16(_mm_adds_epi16(divideSums<method>(sums), towardZero), ceiling);
    lastButOne = last;
    last = quantise(values, indexes[x]);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(errors + size_t{x} * 4), last);
  }
  run.errors.roll();
}

template <typename Quantiser>
constexpr DitherRowFunction functions[] = {diffuseColors<1, Quantiser>,
                                           diffuseColors<2, Quantiser>,
                                           diffuseColors<3, Quantiser>,
                                           diffuseColors<4, Quantiser>,
                                           nullptr,
                                           diffuseColors<6, Quantiser>};

}  // namespace

template <int method, int lanes>
void vectorSums(int16_t* sums, const ErrorRows& errors, size_t samples) {
  static_assert(sumsFit16Bits(kernelOf<method>));
  size_t i = 0;
  for (; i + 8 <= samples; i += 8) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(sums + i), eightSums<method, lanes>(errors, i));
  }
  for (; i < samples; ++i) sums[i] = static_cast<int16_t>(sumFromAbove<method, lanes>(errors, i));
}

template void vectorSums<1, 1>(int16_t*, const ErrorRows&, size_t);
template void vectorSums<2, 1>(int16_t*, const ErrorRows&, size_t);
template void vectorSums<3, 1>(int16_t*, const ErrorRows&, size_t);
template void vectorSums<4, 1>(int16_t*, const ErrorRows&, size_t);
template void vectorSums<6, 1>(int16_t*, const ErrorRows&, size_t);

DitherRowFunction vectorDiffusion(int method, int kind) {
  return chooseByQuantiser(kind, [&]<typename Quantiser>() { return functions<Quantiser>[method - 1]; });
}

}  // namespace zavo
