#pragma once

#include <QMap>
#include <QString>
#include <QStringList>
#include <memory>

namespace tandeko {

// String values under keys below the current user's branch. A key is a path of names joined by "\".
// Names of keys and values ignore case and keep the case they were created with.
class Registry {
 public:
  virtual ~Registry() = default;

  // Each answers false when the change could not be stored.
  virtual bool createKey(const QString& key) = 0;
  virtual bool write(const QString& key, const QString& name, const QString& value) = 0;
  virtual bool removeValue(const QString& key, const QString& name) = 0;
  // With all that is below it; false also when there is no such key.
  virtual bool removeKey(const QString& key) = 0;

  virtual bool hasKey(const QString& key) const = 0;
  virtual QString read(const QString& key, const QString& name, const QString& fallback = {}) const = 0;
  // In alphabetical order.
  virtual QStringList subkeys(const QString& key) const = 0;
  virtual QStringList valueNames(const QString& key) const = 0;
};

// The content of a registry, kept in memory.
class MemoryRegistry : public Registry {
 public:
  bool createKey(const QString& key) override;
  bool write(const QString& key, const QString& name, const QString& value) override;
  bool removeValue(const QString& key, const QString& name) override;
  bool removeKey(const QString& key) override;
  bool hasKey(const QString& key) const override;
  QString read(const QString& key, const QString& name, const QString& fallback = {}) const override;
  QStringList subkeys(const QString& key) const override;
  QStringList valueNames(const QString& key) const override;

  // A line "[key]" for each key and "name=value" for each of its values; "%", "=", line ends and the
  // like inside names and values are written as "%" and four hexadecimal digits.
  QByteArray toBytes() const;
  void fromBytes(const QByteArray& bytes);

 private:
  struct Entry {
    QString name;
    QString value;
  };
  struct Node {
    QString name;  // the last part of the key, as created
    QMap<QString, Entry> values;
    QMap<QString, Node> children;
  };
  const Node* find(const QString& key) const;
  Node* find(const QString& key);
  Node& make(const QString& key);

  Node root_;
};

// A registry in one text file, for systems that have none. Several copies of the program may use it at
// once: every change is made under a lock file and replaces the file whole, every read sees the newest.
class FileRegistry : public Registry {
 public:
  explicit FileRegistry(const QString& path);

  bool createKey(const QString& key) override;
  bool write(const QString& key, const QString& name, const QString& value) override;
  bool removeValue(const QString& key, const QString& name) override;
  bool removeKey(const QString& key) override;
  bool hasKey(const QString& key) const override;
  QString read(const QString& key, const QString& name, const QString& fallback = {}) const override;
  QStringList subkeys(const QString& key) const override;
  QStringList valueNames(const QString& key) const override;

 private:
  template <typename Change>
  bool change(Change&& apply);
  const MemoryRegistry& current() const;

  QString path_;
  mutable QByteArray bytes_;  // what content_ was read from
  mutable MemoryRegistry content_;
};

// The current user's registry on Windows; elsewhere the file "registry" in the folder "kwarcel" of the
// user's configuration.
std::unique_ptr<Registry> systemRegistry();

}  // namespace tandeko
