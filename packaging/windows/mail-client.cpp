// A mail program for trying ours: it writes the letter that it is given, in UTF-8, to letter.txt beside itself, and
// changes the current folder, as mail programs do.

#include <windows.h>

#include <cstdio>
#include <string>

namespace {

struct Recipient {
  ULONG reserved, kind;
  const wchar_t *name, *address;
  ULONG entrySize;
  void* entry;
};
struct File {
  ULONG reserved, flags, position;
  const wchar_t *path, *name;
  void* type;
};
struct Message {
  ULONG reserved;
  const wchar_t *subject, *text, *type, *received, *conversation;
  ULONG flags;
  Recipient* originator;
  ULONG recipients;
  Recipient* recipient;
  ULONG files;
  File* file;
};

HMODULE self = nullptr;

std::string utf8(const wchar_t* text) {
  char bytes[4096] = "";
  if (text) WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes, sizeof bytes, nullptr, nullptr);
  return bytes;
}

}  // namespace

extern "C" __declspec(dllexport) ULONG WINAPI MAPISendMailW(ULONG_PTR, ULONG_PTR, Message* message, ULONG, ULONG) {
  wchar_t path[1024];
  GetModuleFileNameW(self, path, 1024);
  std::wstring note = path;
  note = note.substr(0, note.rfind(L'\\')) + L"\\letter.txt";
  std::FILE* out = _wfopen(note.c_str(), L"wb");
  if (!out) return 2;
  for (ULONG i = 0; i < message->recipients; ++i)
    std::fprintf(out, "To: %s %s\n", utf8(message->recipient[i].name).c_str(),
                 utf8(message->recipient[i].address).c_str());
  std::fprintf(out, "Subject: %s\n", utf8(message->subject).c_str());
  for (ULONG i = 0; i < message->files; ++i) std::fprintf(out, "File: %s\n", utf8(message->file[i].path).c_str());
  std::fprintf(out, "\n%s\n", utf8(message->text).c_str());
  std::fclose(out);
  SetCurrentDirectoryW(L"C:\\");
  return 0;
}

// Never called where the wide one is known.
extern "C" __declspec(dllexport) ULONG WINAPI MAPISendMail(ULONG_PTR, ULONG_PTR, void*, ULONG, ULONG) { return 2; }

BOOL WINAPI DllMain(HINSTANCE module, DWORD, void*) {
  self = module;
  return TRUE;
}
