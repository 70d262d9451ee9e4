// Rows from one pixel format to another, in place in a buffer as a caller converts a picture row by row.
#include <cstring>

#include "bench.h"
#include "pictures.h"
#include "wic.h"

namespace bench {
namespace {

struct Conversion {
  const char* name;
  int from, to, fromOrder, toOrder;
  const GUID *wicFrom, *wicTo;
};

const Conversion conversions[] = {
    {"24 to 32 bits", 24, 32, 1, 1, &GUID_WICPixelFormat24bppBGR, &GUID_WICPixelFormat32bppBGR},
    {"32 to 24 bits", 32, 24, 1, 1, &GUID_WICPixelFormat32bppBGR, &GUID_WICPixelFormat24bppBGR},
    {"24 bits to the other order", 24, 24, 1, 0, &GUID_WICPixelFormat24bppBGR, &GUID_WICPixelFormat24bppRGB},
    {"24 bits to grey", 24, 0, 1, 0, &GUID_WICPixelFormat24bppBGR, &GUID_WICPixelFormat8bppGray},
    {"24 to 16 bits", 24, 16, 1, 1, nullptr, nullptr},
    {"8 bits to 24", 8, 24, 0, 1, nullptr, nullptr},
};

void convertAll(Bitmap& result, const Bitmap& source, const Conversion& c, std::vector<unsigned char>& row) {
  for (int y = 0; y < source.Height; ++y) {
    memcpy(row.data(), source.row(y), source.BytesPerLine);
    Zv_ConvertBuffer(row.data(), source.Width, c.from, c.to, c.fromOrder, c.toOrder, nullptr, nullptr);
    memcpy(result.row(y), row.data(), result.BytesPerLine);
  }
}

}  // namespace

void conversion(Bench& bench) {
  for (const Size size : allSizes) {
    for (const Conversion& c : conversions) {
      const std::string operation = std::string("convert ") + c.name;
      if (!bench.wants(operation, size)) continue;
      Bitmap source(size, c.from), result(size, c.to == 0 ? 8 : c.to), peer(size, c.to == 0 ? 8 : c.to);
      paint(source);
      if (c.to == 0) makeGray(result), makeGray(peer);
      result.ColorOrder = peer.ColorOrder = c.to > 8 ? c.toOrder : 0;
      std::vector<unsigned char> row(source.BytesPerLine + result.BytesPerLine);
      std::vector<Contender> contenders = {{"Zv_ConvertBuffer, row by row", [&] { convertAll(result, source, c, row); },
                                            [&] {
                                              // Rows of 16 bits are cut, and grey is one channel of three.
                                              return c.to == 0 ? std::string()
                                                               : sameMean(source, result, c.to == 16 ? 4 : 0.001);
                                            }}};
      if (c.wicFrom != nullptr) {
        WicConversion wic(source, *c.wicFrom, *c.wicTo, WICBitmapDitherTypeNone, nullptr, 0);
        if (wic.run(peer)) {
          contenders.push_back({"WIC format converter", [&] { wic.run(peer); }, [] { return std::string(); }});
        }
        bench.compare(operation, size, result.DataSize, contenders);
      } else {
        bench.compare(operation, size, result.DataSize, contenders);
      }
    }
  }
}

}  // namespace bench
