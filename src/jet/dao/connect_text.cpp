#include "jet/dao/connect_text.h"

#include <charconv>

#include "jet/format/error.h"
#include "jet/format/text.h"

namespace jet {

std::u16string connectPart(std::u16string_view connect, std::u16string_view name) {
  const std::u16string folded = foldName(connect);
  const size_t at = folded.find(u';' + std::u16string(name) + u'=');
  if (at == std::u16string::npos) return {};
  const size_t from = at + name.size() + 2;
  return std::u16string(connect.substr(from, connect.find(u';', from) - from));
}

std::optional<uint16_t> localeLcid(std::u16string_view locale) {
  const std::string text = toUtf8(connectPart(locale, u"langid"));
  if (text.empty()) return std::nullopt;
  unsigned lcid = 0;
  const bool hex = text.starts_with("0x") || text.starts_with("0X");
  const auto [end, error] =
      std::from_chars(text.data() + (hex ? 2 : 0), text.data() + text.size(), lcid, hex ? 16 : 10);
  if (error != std::errc{} || end != text.data() + text.size() || lcid > 0xFFFF)
    throw Error(3001, {}, "DAO.Workspace");
  return static_cast<uint16_t>(lcid);
}

}  // namespace jet
