// Memory and files of the system, as the whole library (and other modules loaded beside it) uses them.
#include <zavo.h>

#include <cstdint>

namespace {

// Every block stays locked for its whole life, so its address identifies it; shareable, so that the clipboard and
// its kind can take it.
constexpr UINT blockFlags = GMEM_MOVEABLE | GMEM_DDESHARE;

HANDLE handleOf(int file) {
  return reinterpret_cast<HANDLE>(static_cast<intptr_t>(file));
}

int fileOf(HANDLE handle) {
  return static_cast<int>(reinterpret_cast<intptr_t>(handle));
}

DWORD sharingOf(int permissionFlags) {
  constexpr int readable = 0x100;
  constexpr int writeable = 0x80;
  if ((permissionFlags & readable) == 0) return 0;
  return (permissionFlags & writeable) != 0 ? FILE_SHARE_READ | FILE_SHARE_WRITE : FILE_SHARE_READ;
}

DWORD dispositionOf(int openFlags) {
  constexpr int create = 0x100;
  constexpr int truncate = 0x200;
  if ((openFlags & create) != 0) return CREATE_ALWAYS;
  return (openFlags & truncate) != 0 ? TRUNCATE_EXISTING : OPEN_EXISTING;
}

}  // namespace

void* ZAVO_CALL Zv_OsAllocInit(unsigned size, int zero) {
  HGLOBAL memory = GlobalAlloc(blockFlags | (zero != 0 ? GMEM_ZEROINIT : 0), size);
  if (memory == nullptr) return nullptr;
  void* address = GlobalLock(memory);
  if (address == nullptr) GlobalFree(memory);
  return address;
}

void* ZAVO_CALL Zv_OsAlloc(unsigned size) {
  return Zv_OsAllocInit(size, 0);
}

void* ZAVO_CALL Zv_OsReAlloc(void* address, unsigned size) {
  HGLOBAL memory = GlobalHandle(address);
  if (memory == nullptr) return nullptr;
  GlobalUnlock(memory);
  HGLOBAL resized = GlobalReAlloc(memory, size, GMEM_MOVEABLE);
  return resized != nullptr ? GlobalLock(resized) : nullptr;
}

int ZAVO_CALL Zv_OsFree(void* address) {
  if (address == nullptr) return 0;
  HGLOBAL memory = GlobalHandle(address);
  GlobalUnlock(memory);
  GlobalFree(memory);
  return 0;
}

int ZAVO_CALL Zv_OsCreat(const char* name, int attributes) {
  const bool readOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
  return fileOf(CreateFileA(name, readOnly ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE,
                            FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, CREATE_ALWAYS,
                            static_cast<DWORD>(attributes & 7), nullptr));
}

int ZAVO_CALL Zv_OsOpen(const char* name, int openFlags, int permissionFlags) {
  DWORD access = GENERIC_READ | GENERIC_WRITE;
  DWORD attributes = FILE_ATTRIBUTE_NORMAL;
  if ((openFlags & 3) == 0) {
    access = GENERIC_READ;
    attributes = FILE_ATTRIBUTE_READONLY;
  } else if ((openFlags & 3) == 1) {
    access = GENERIC_WRITE;
  }
  return fileOf(
      CreateFileA(name, access, sharingOf(permissionFlags), nullptr, dispositionOf(openFlags), attributes, nullptr));
}

int ZAVO_CALL Zv_OsRead(int file, void* buffer, unsigned count) {
  DWORD done = 0;
  return ReadFile(handleOf(file), buffer, count, &done, nullptr) ? static_cast<int>(done) : -1;
}

int ZAVO_CALL Zv_OsWrite(int file, const void* buffer, unsigned count) {
  DWORD done = 0;
  return WriteFile(handleOf(file), buffer, count, &done, nullptr) ? static_cast<int>(done) : -1;
}

unsigned ZAVO_CALL Zv_OsSeek(int file, int offset, int origin) {
  const DWORD method = origin == 0 ? FILE_BEGIN : origin == 1 ? FILE_CURRENT : FILE_END;
  return SetFilePointer(handleOf(file), offset, nullptr, method);
}

int ZAVO_CALL Zv_OsClose(int file) {
  return CloseHandle(handleOf(file)) ? 0 : -1;
}

int ZAVO_CALL Zv_OsDelete(const char* name) {
  return DeleteFileA(name) ? 0 : -1;
}

int ZAVO_CALL Zv_OsGetTempName(char* buffer) {
  if (buffer == nullptr) return 0;
  char folder[260];
  const DWORD length = GetTempPathA(sizeof folder, folder);
  const bool hasFolder = length > 0 && length < sizeof folder;
  if (!hasFolder || GetTempFileNameA(folder, "zv", 0, buffer) == 0) buffer[0] = '\0';
  return 0;
}
