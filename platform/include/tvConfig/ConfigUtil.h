#ifndef TVCONFIG_CONFIGUTIL_H
#define TVCONFIG_CONFIGUTIL_H

#include <string>

namespace tvConfig {

// Reads values of the model's INI configuration files.
class ConfigUtil {
  public:
    static ConfigUtil& instance();

    // Reads the integer `key` of `section` (the name between the brackets) of the INI `file`.
    // Returns non-zero and sets `value` on success; returns 0 and leaves `value` alone when the
    // file, the section or the key is missing or the value is not an integer.
    int readInt(const std::string& file, const std::string& section, const std::string& key,
                int& value);

  private:
    ConfigUtil() = default;
};

}  // namespace tvConfig

#endif
