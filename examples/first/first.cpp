// A first client in C++: the same work as first.c, with an owner for what must be freed and exceptions for what fails.
//   first_cpp IN.bmp OUT.bmp
#include <zavo.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// Throws for every status but success.
void check(int status, const char* work) {
  if (status != KSUCCESS) throw std::runtime_error(std::string(work) + " failed: " + std::to_string(status));
}

class Bitmap {
 public:
  // Of a BMP file: its header says where the rows begin.
  explicit Bitmap(const char* name) {
    std::ifstream stream(name, std::ios::binary);
    const std::vector<char> file(std::istreambuf_iterator<char>(stream), {});
    if (file.size() < sizeof(BITMAPFILEHEADER)) throw std::runtime_error(std::string("cannot read ") + name);
    const auto* header = reinterpret_cast<const BITMAPFILEHEADER*>(file.data());
    const auto* info = reinterpret_cast<const BITMAPINFO*>(header + 1);
    const auto* rows = reinterpret_cast<const unsigned char*>(file.data()) + header->bfOffBits;
    check(Zv_ConvertFromDIB(&handle_, info, rows), "loading");
  }
  Bitmap(const Bitmap&) = delete;
  Bitmap& operator=(const Bitmap&) = delete;
  ~Bitmap() { Zv_FreeBitmap(&handle_); }

  void shrink(int divisor) {
    check(Zv_ResampleBitmap(&handle_, handle_.Width / divisor, handle_.Height / divisor), "shrinking");
  }
  void reduce(int bits) {
    check(Zv_ColorResBitmap(&handle_, nullptr, bits, COLORRES_OPTIMISED_PALETTE, nullptr, 0), "dithering");
  }
  void paint(HDC dc) {
    const RECT corner = {0, 0, handle_.Width, handle_.Height};
    check(Zv_PaintDC(dc, &handle_, nullptr, nullptr, &corner, nullptr, SRCCOPY), "painting");
  }
  void write(const char* name) {
    HGLOBAL dib = Zv_ChangeToDIB(&handle_);
    if (dib == nullptr) throw std::runtime_error("writing failed");
    const auto* info = static_cast<const BITMAPINFOHEADER*>(GlobalLock(dib));
    const DWORD colorBytes = info->biClrUsed * sizeof(RGBQUAD);
    const auto offset = static_cast<DWORD>(sizeof(BITMAPFILEHEADER) + sizeof *info + colorBytes);
    const BITMAPFILEHEADER header = {0x4D42, offset + info->biSizeImage, 0, 0, offset};
    std::ofstream stream(name, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(&header), sizeof header);
    stream.write(reinterpret_cast<const char*>(info), static_cast<int>(header.bfSize - sizeof header));
    GlobalUnlock(dib);
    GlobalFree(dib);
  }

 private:
  BitmapHandle handle_{};
};

}  // namespace

int main(int count, char** words) try {
  if (count != 3) throw std::runtime_error("usage: first_cpp IN.bmp OUT.bmp");
  Bitmap bitmap(words[1]);
  bitmap.shrink(2);
  bitmap.reduce(4);
  HDC screen = GetDC(nullptr);
  bitmap.paint(screen);
  ReleaseDC(nullptr, screen);
  bitmap.write(words[2]);
  return 0;
} catch (const std::exception& error) {
  std::puts(error.what());
  return 1;
}
