// The sliders set the library's painting at once; nothing is changed in the picture.
#include "adjust_bar.h"

#include <zavo.h>

#include <cmath>
// commctrl.h needs the rest of windows.h first.
#include <commctrl.h>

#include "common/text.h"
#include "resource.h"

namespace zavoview {

namespace {

struct Slider {
  int control;
  int valueControl;
  int range;  /// From -range to range.
};

constexpr Slider sliders[] = {
    {IDC_INTENSITY, IDC_INTENSITY_VALUE, 1000},
    {IDC_CONTRAST, IDC_CONTRAST_VALUE, 1000},
    {IDC_GAMMA, IDC_GAMMA_VALUE, 100},
};

/// The ends of the slider are a quarter and four times, its middle is 1; gammas are in hundredths.
int gammaOf(int position) {
  return static_cast<int>(std::lround(100 * std::pow(4.0, position / 100.0)));
}

int positionOf(HWND dialog, const Slider& slider) {
  return static_cast<int>(SendDlgItemMessageW(dialog, slider.control, TBM_GETPOS, 0, 0));
}

}  // namespace

void AdjustBar::create(HWND parent) {
  window_ = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_ADJUST), parent, procedure,
                               reinterpret_cast<LPARAM>(this));
  RECT rect;
  GetWindowRect(window_, &rect);
  height_ = rect.bottom - rect.top;
  for (const Slider& slider : sliders) {
    SendDlgItemMessageW(window_, slider.control, TBM_SETRANGEMIN, FALSE, -slider.range);
    SendDlgItemMessageW(window_, slider.control, TBM_SETRANGEMAX, FALSE, slider.range);
    SendDlgItemMessageW(window_, slider.control, TBM_SETLINESIZE, 0, slider.range / 100);
    SendDlgItemMessageW(window_, slider.control, TBM_SETPAGESIZE, 0, slider.range / 10);
    // A position that stays the same does not move the thumb to where it is in the new range.
    SendDlgItemMessageW(window_, slider.control, TBM_SETPOS, TRUE, slider.range);
  }
  reset();
}

INT_PTR CALLBACK AdjustBar::procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_INITDIALOG) {
    SetWindowLongPtrW(window, GWLP_USERDATA, lParam);
    return TRUE;
  }
  auto* const bar = reinterpret_cast<AdjustBar*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (bar == nullptr) return FALSE;
  if (message == WM_HSCROLL) {
    bar->apply();
    return TRUE;
  }
  if (message == WM_COMMAND && LOWORD(wParam) == IDC_RESET) {
    bar->reset();
    return TRUE;
  }
  return FALSE;
}

int AdjustBar::layout(int parentWidth) {
  if (!shown()) return 0;
  MoveWindow(window_, 0, 0, parentWidth, height_, TRUE);
  return height_;
}

void AdjustBar::reset() {
  for (const Slider& slider : sliders) SendDlgItemMessageW(window_, slider.control, TBM_SETPOS, TRUE, 0);
  apply();
}

void AdjustBar::apply() {
  const int intensity = positionOf(window_, sliders[0]);
  const int contrast = positionOf(window_, sliders[1]);
  const int gamma = gammaOf(positionOf(window_, sliders[2]));
  Zv_SetPaintIntensity(intensity);
  Zv_SetPaintContrast(contrast);
  Zv_SetPaintGamma(gamma);
  const std::string texts[] = {zv::format("%d", intensity), zv::format("%d", contrast),
                               zv::format("%d.%02d", gamma / 100, gamma % 100)};
  for (size_t i = 0; i < std::size(sliders); i++)
    SetDlgItemTextW(window_, sliders[i].valueControl, zv::wide(texts[i]).c_str());
  if (onChange) onChange();
}

}  // namespace zavoview
