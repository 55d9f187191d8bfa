#include "platform/registry.h"

#include <algorithm>

namespace tandeko {

namespace {

constexpr QChar kSeparator = u'\\';

// What tells a name apart from the others.
QString fold(const QString& name) { return name.toCaseFolded(); }

QString escape(const QString& text, QStringView special) {
  QString out;
  for (const QChar c : text) {
    if (c.unicode() < 0x20 || c == u'%' || special.contains(c))
      out += QStringLiteral("%%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
    else
      out += c;
  }
  return out;
}

QString unescape(QStringView text) {
  QString out;
  for (qsizetype i = 0; i < text.size(); ++i) {
    bool ok = false;
    if (text[i] == u'%' && i + 5 <= text.size()) {
      const uint code = text.mid(i + 1, 4).toUInt(&ok, 16);
      if (ok) {
        out += QChar(static_cast<char16_t>(code));
        i += 4;
      }
    }
    if (!ok) out += text[i];
  }
  return out;
}

QStringList parts(const QString& key) { return key.split(kSeparator, Qt::SkipEmptyParts); }

}  // namespace

const MemoryRegistry::Node* MemoryRegistry::find(const QString& key) const {
  const Node* node = &root_;
  for (const QString& part : parts(key)) {
    const auto child = node->children.constFind(fold(part));
    if (child == node->children.constEnd()) return nullptr;
    node = &*child;
  }
  return node;
}

MemoryRegistry::Node* MemoryRegistry::find(const QString& key) {
  return const_cast<Node*>(std::as_const(*this).find(key));
}

MemoryRegistry::Node& MemoryRegistry::make(const QString& key) {
  Node* node = &root_;
  for (const QString& part : parts(key)) {
    Node& child = node->children[fold(part)];
    if (child.name.isEmpty()) child.name = part;
    node = &child;
  }
  return *node;
}

bool MemoryRegistry::createKey(const QString& key) {
  make(key);
  return true;
}

bool MemoryRegistry::write(const QString& key, const QString& name, const QString& value) {
  Entry& entry = make(key).values[fold(name)];
  if (entry.name.isNull()) entry.name = name;
  entry.value = value;
  return true;
}

bool MemoryRegistry::removeValue(const QString& key, const QString& name) {
  Node* node = find(key);
  return node && node->values.remove(fold(name)) > 0;
}

bool MemoryRegistry::removeKey(const QString& key) {
  QStringList path = parts(key);
  if (path.isEmpty()) return false;
  const QString last = path.takeLast();
  Node* parent = find(path.join(kSeparator));
  return parent && parent->children.remove(fold(last)) > 0;
}

bool MemoryRegistry::hasKey(const QString& key) const { return find(key) != nullptr; }

QString MemoryRegistry::read(const QString& key, const QString& name, const QString& fallback) const {
  const Node* node = find(key);
  if (!node) return fallback;
  const auto entry = node->values.constFind(fold(name));
  return entry == node->values.constEnd() ? fallback : entry->value;
}

QStringList MemoryRegistry::subkeys(const QString& key) const {
  QStringList names;
  if (const Node* node = find(key))
    for (const Node& child : node->children) names += child.name;
  std::sort(names.begin(), names.end(), [](const QString& a, const QString& b) {
    return QString::localeAwareCompare(a.toLower(), b.toLower()) < 0;
  });
  return names;
}

QStringList MemoryRegistry::valueNames(const QString& key) const {
  QStringList names;
  if (const Node* node = find(key))
    for (const Entry& entry : node->values) names += entry.name;
  return names;
}

QByteArray MemoryRegistry::toBytes() const {
  QString out;
  const auto add = [&out](const auto& self, const Node& node, const QString& key) -> void {
    if (!key.isEmpty()) out += u'[' + key + QStringLiteral("]\n");
    for (const Entry& entry : node.values)
      out += escape(entry.name, u"=[") + u'=' + escape(entry.value, u"") + u'\n';
    for (const Node& child : node.children) {
      const QString name = escape(child.name, u"]");
      self(self, child, key.isEmpty() ? name : key + kSeparator + name);
    }
  };
  add(add, root_, QString());
  return out.toUtf8();
}

void MemoryRegistry::fromBytes(const QByteArray& bytes) {
  root_ = Node();
  Node* node = nullptr;
  const QString text = QString::fromUtf8(bytes);
  for (const QStringView line : QStringView(text).split(u'\n', Qt::SkipEmptyParts)) {
    if (line.startsWith(u'[') && line.endsWith(u']')) {
      node = &make(unescape(line.sliced(1, line.size() - 2)));
      continue;
    }
    const auto equals = line.indexOf(u'=');
    if (!node || equals < 0) continue;
    const QString name = unescape(line.first(equals));
    node->values[fold(name)] = Entry{name, unescape(line.sliced(equals + 1))};
  }
}

}  // namespace tandeko
