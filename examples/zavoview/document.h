// The picture that is open: its name, whether it was changed, and the state one step back.
#pragma once

#include <functional>
#include <string>

#include "common/picture.h"

namespace zavoview {

using zv::Picture;

/// The picture is always stored upright, so that its stored coordinates are those the user sees.
class Document {
 public:
  [[nodiscard]] bool hasPicture() const { return (picture_->Flags & BMF_ALLOCATED) != 0; }
  Picture& picture() { return picture_; }
  BitmapHandle* handle() { return picture_.handle(); }
  [[nodiscard]] bool hasSelection() const { return Zv_BitmapHasRgn(&*picture_.operator->()) != 0; }

  /// Path of the file, or a title for a picture that has none.
  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] std::string name() const;
  [[nodiscard]] bool hasFile() const { return hasFile_; }
  [[nodiscard]] bool modified() const { return modified_; }

  /// Puts in another picture; throws a Failure and keeps the present one when that cannot be stored upright.
  void adopt(Picture picture, std::string path, bool hasFile);
  void save(const std::string& path);

  using Operation = std::function<int(BitmapHandle*)>;
  /// Runs an operation on the picture that can be undone. When it fails the picture is as before, and a Failure says
  /// why ("cannot rotate: ..."). False: the user has stopped it, and the picture is as before too.
  bool change(const std::string& work, const Operation& operation);
  [[nodiscard]] bool canUndo() const { return (previous_->Flags & BMF_ALLOCATED) != 0; }
  /// Takes the last change back; once more does it again.
  void undo();
  void forgetUndo() { previous_ = Picture(); }

 private:
  Picture picture_;
  Picture previous_;
  std::string path_;
  bool hasFile_ = false;
  bool modified_ = false;
};

}  // namespace zavoview
