#include "document.h"

#include "common/errors.h"
#include "common/wic.h"

namespace zavoview {

namespace {

/// What the status callback returns when it has seen Esc; the operation then returns it.
constexpr int stoppedByUser = 0;

}  // namespace

std::string Document::name() const {
  return path_.substr(path_.find_last_of("\\/") + 1);
}

void Document::adopt(Picture picture, std::string path, bool hasFile) {
  zv::check(Zv_ChangeBitmapViewPerspective(nullptr, picture.handle(), VIEW_UPRIGHT), "turn the picture upright");
  picture_ = std::move(picture);
  previous_ = Picture();
  path_ = std::move(path);
  hasFile_ = hasFile;
  modified_ = false;
}

void Document::save(const std::string& path) {
  zv::writePicture(path, picture_);
  path_ = path;
  hasFile_ = true;
  modified_ = false;
}

bool Document::change(const std::string& work, const Operation& operation) {
  Picture before;
  zv::check(Zv_CopyBitmap(before.handle(), picture_.handle()), work);
  const int status = operation(picture_.handle());
  if (status == KSUCCESS) {
    previous_ = std::move(before);
    modified_ = true;
    return true;
  }
  picture_ = std::move(before);
  if (status != stoppedByUser) zv::check(status, work);
  return false;
}

void Document::undo() {
  std::swap(*picture_.handle(), *previous_.handle());
  modified_ = true;
}

}  // namespace zavoview
