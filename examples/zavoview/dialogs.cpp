#include "dialogs.h"

#include <zavo.h>

#include <algorithm>

#include "resource.h"

namespace zavoview {

namespace {

struct Named {
  const wchar_t* name;
  unsigned value;
};

constexpr Named palettes[] = {
    {L"From the picture", COLORRES_OPTIMISED_PALETTE},
    {L"Fixed", COLORRES_FIXED_PALETTE},
    {L"Greys", COLORRES_GRAY_PALETTE},
};

/// By their numbers.
constexpr const wchar_t* ditherings[] = {L"None",   L"Floyd-Steinberg", L"Stucki",
                                         L"Burkes", L"Sierra",          L"Stevenson-Arce",
                                         L"Jarvis", L"Ordered dots",    L"Clustered dots"};
constexpr int stuckiDithering = 2;

LRESULT send(HWND dialog, int control, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
  return SendDlgItemMessageW(dialog, control, message, wParam, lParam);
}

/// Says that a field's value will not do.
void refuse(HWND dialog, int control) {
  MessageBeep(MB_ICONWARNING);
  SetFocus(GetDlgItem(dialog, control));
  send(dialog, control, EM_SETSEL, 0, -1);
}

INT_PTR CALLBACK colorsProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_INITDIALOG) {
    SetWindowLongPtrW(dialog, DWLP_USER, lParam);
    SetDlgItemInt(dialog, IDC_COLOR_COUNT, reinterpret_cast<const ColorChoice*>(lParam)->count, FALSE);
    for (const Named& palette : palettes)
      send(dialog, IDC_PALETTE, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(palette.name));
    for (const wchar_t* name : ditherings) send(dialog, IDC_DITHERING, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name));
    send(dialog, IDC_PALETTE, CB_SETCURSEL, 0);
    send(dialog, IDC_DITHERING, CB_SETCURSEL, stuckiDithering);
    return TRUE;
  }
  if (message != WM_COMMAND) return FALSE;
  if (LOWORD(wParam) == IDCANCEL) EndDialog(dialog, IDCANCEL);
  if (LOWORD(wParam) != IDOK) return FALSE;
  auto* const choice = reinterpret_cast<ColorChoice*>(GetWindowLongPtrW(dialog, DWLP_USER));
  choice->count = GetDlgItemInt(dialog, IDC_COLOR_COUNT, nullptr, FALSE);
  choice->palette = palettes[send(dialog, IDC_PALETTE, CB_GETCURSEL)].value;
  choice->dithering = static_cast<int>(send(dialog, IDC_DITHERING, CB_GETCURSEL));
  if (choice->count < 2 || choice->count > 256)
    refuse(dialog, IDC_COLOR_COUNT);
  else
    EndDialog(dialog, IDOK);
  return TRUE;
}

struct SizeQuestion {
  SizeChoice original;
  SizeChoice choice;
  bool following = false;  /// The other side is being set, which is no typing of the user.
};

void followProportions(HWND dialog, SizeQuestion& question, int typed) {
  if (question.following || IsDlgButtonChecked(dialog, IDC_KEEP_PROPORTIONS) != BST_CHECKED) return;
  const int value = static_cast<int>(GetDlgItemInt(dialog, typed, nullptr, FALSE));
  const SizeChoice& original = question.original;
  question.following = true;
  if (typed == IDC_WIDTH)
    SetDlgItemInt(dialog, IDC_HEIGHT, static_cast<UINT>(std::max(1, MulDiv(value, original.height, original.width))),
                  FALSE);
  else
    SetDlgItemInt(dialog, IDC_WIDTH, static_cast<UINT>(std::max(1, MulDiv(value, original.width, original.height))),
                  FALSE);
  question.following = false;
}

INT_PTR CALLBACK sizeProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_INITDIALOG) {
    const auto* const question = reinterpret_cast<const SizeQuestion*>(lParam);
    SetDlgItemInt(dialog, IDC_WIDTH, static_cast<UINT>(question->original.width), FALSE);
    SetDlgItemInt(dialog, IDC_HEIGHT, static_cast<UINT>(question->original.height), FALSE);
    CheckDlgButton(dialog, IDC_KEEP_PROPORTIONS, BST_CHECKED);
    CheckDlgButton(dialog, IDC_RESAMPLE, BST_CHECKED);
    // Only now is typing answered.
    SetWindowLongPtrW(dialog, DWLP_USER, lParam);
    return TRUE;
  }
  auto* const question = reinterpret_cast<SizeQuestion*>(GetWindowLongPtrW(dialog, DWLP_USER));
  if (message != WM_COMMAND || question == nullptr) return FALSE;
  if (HIWORD(wParam) == EN_CHANGE) followProportions(dialog, *question, LOWORD(wParam));
  if (LOWORD(wParam) == IDCANCEL) EndDialog(dialog, IDCANCEL);
  if (LOWORD(wParam) != IDOK) return FALSE;
  SizeChoice& choice = question->choice;
  choice.width = static_cast<int>(GetDlgItemInt(dialog, IDC_WIDTH, nullptr, FALSE));
  choice.height = static_cast<int>(GetDlgItemInt(dialog, IDC_HEIGHT, nullptr, FALSE));
  choice.smooth = IsDlgButtonChecked(dialog, IDC_RESAMPLE) == BST_CHECKED;
  if (choice.width < 1)
    refuse(dialog, IDC_WIDTH);
  else if (choice.height < 1)
    refuse(dialog, IDC_HEIGHT);
  else
    EndDialog(dialog, IDOK);
  return TRUE;
}

bool ask(HWND owner, int dialog, DLGPROC procedure, void* question) {
  return DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(dialog), owner, procedure,
                         reinterpret_cast<LPARAM>(question)) == IDOK;
}

}  // namespace

std::optional<ColorChoice> askColors(HWND owner) {
  ColorChoice choice;
  if (!ask(owner, IDD_COLORS, colorsProcedure, &choice)) return {};
  return choice;
}

std::optional<SizeChoice> askSize(HWND owner, int width, int height) {
  SizeQuestion question{{width, height}, {}};
  if (!ask(owner, IDD_SIZE, sizeProcedure, &question)) return {};
  return question.choice;
}

}  // namespace zavoview
