// The library prints row by row and reports each; between the rows the dialog gets its messages, so that its button
// works. The owner is disabled meanwhile: nobody changes a picture that is being printed.
#include "printing.h"

#include <windows.h>
// These need the rest of windows.h first.
#include <commctrl.h>
#include <commdlg.h>

#include "common/errors.h"
#include "common/text.h"
#include "resource.h"

namespace zavoview {

namespace {

/// The device context of a print job, aborted unless the job is finished.
class PrintJob {
 public:
  explicit PrintJob(HDC dc) : dc_(dc) {}
  PrintJob(const PrintJob&) = delete;
  PrintJob& operator=(const PrintJob&) = delete;
  ~PrintJob() {
    if (begun_) AbortDoc(dc_);
    DeleteDC(dc_);
  }

  [[nodiscard]] HDC dc() const { return dc_; }
  bool begin(const std::wstring& name) {
    DOCINFOW info{};
    info.cbSize = sizeof info;
    info.lpszDocName = name.c_str();
    begun_ = StartDocW(dc_, &info) > 0;
    return begun_ && StartPage(dc_) > 0;
  }
  bool finish() {
    const bool ended = EndPage(dc_) > 0 && EndDoc(dc_) > 0;
    begun_ = !ended;
    return ended;
  }

 private:
  HDC dc_;
  bool begun_ = false;
};

// The library's callback carries no user data: the dialog that is shown is known here.
class ProgressDialog;
ProgressDialog* shownDialog = nullptr;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables): see above

class ProgressDialog {
 public:
  ProgressDialog(HWND owner, const std::wstring& name) : owner_(owner), window_(open()) {
    SetDlgItemTextW(window_, IDC_PRINT_TEXT, name.c_str());
    shownDialog = this;
    Zv_SetStatusCallBack(report);
  }
  ProgressDialog(const ProgressDialog&) = delete;
  ProgressDialog& operator=(const ProgressDialog&) = delete;
  ~ProgressDialog() {
    Zv_SetStatusCallBack(nullptr);
    shownDialog = nullptr;
    EnableWindow(owner_, TRUE);
    DestroyWindow(window_);
  }

  [[nodiscard]] bool cancelled() const { return cancelled_; }

 private:
  // The owner is disabled before the dialog can be seen, and enabled again before it goes.
  HWND open() {
    EnableWindow(owner_, FALSE);
    return CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_PRINTING), owner_, procedure,
                              reinterpret_cast<LPARAM>(this));
  }

  static INT_PTR CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) SetWindowLongPtrW(window, DWLP_USER, lParam);
    if (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL)
      reinterpret_cast<ProgressDialog*>(GetWindowLongPtrW(window, DWLP_USER))->cancelled_ = true;
    return message == WM_INITDIALOG;
  }

  static int ZAVO_CALL report(int percent) {
    ProgressDialog& dialog = *shownDialog;
    SendDlgItemMessageW(dialog.window_, IDC_PRINT_PROGRESS, PBM_SETPOS, static_cast<WPARAM>(percent), 0);
    MSG message;
    while (!dialog.cancelled_ && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      if (message.message == WM_QUIT) {
        PostQuitMessage(static_cast<int>(message.wParam));
        dialog.cancelled_ = true;
      } else if (!IsDialogMessageW(dialog.window_, &message)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
      }
    }
    return dialog.cancelled_ ? 0 : 1;
  }

  HWND owner_;
  HWND window_;
  bool cancelled_ = false;
};

}  // namespace

void printPicture(HWND owner, zv::Picture& picture, const std::string& name) {
  PRINTDLGW question{};
  question.lStructSize = sizeof question;
  question.hwndOwner = owner;
  question.Flags = PD_RETURNDC | PD_NOPAGENUMS | PD_NOSELECTION | PD_USEDEVMODECOPIES;
  // Without a printer the dialog has told the user so itself.
  if (!PrintDlgW(&question)) return;
  if (question.hDevMode != nullptr) GlobalFree(question.hDevMode);
  if (question.hDevNames != nullptr) GlobalFree(question.hDevNames);

  const std::wstring title = zv::wide(name);
  PrintJob job(question.hDC);
  if (!job.begin(title)) throw zv::Failure("cannot print: the printer does not begin a job");
  const ProgressDialog dialog(owner, title);
  const HDC printed = Zv_PrintBitmapExt(job.dc(), picture.handle(), 0, 0, 0, 0, FALSE);
  if (dialog.cancelled()) return;
  if (printed == nullptr || !job.finish()) throw zv::Failure("cannot print: the printer did not take the page");
}

}  // namespace zavoview
