// The user's configuration and its file, rules.json (docs/FORMATS.md).
//
// Values only. Readers and writers of the file are not coordinated beyond the atomic replacement:
// each reads or writes it as a whole. Every operation is callable from any thread.
#pragma once

#include <cstddef>
#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/Rule.h"
#include "core/support/FileError.h"

namespace ferrivane {

// Why a configuration could not be read or written.
struct ConfigError {
    enum class Kind {
        file,      // the system refused
        syntax,    // not JSON
        value,     // JSON, but not a configuration
        encoding,  // a text that is not UTF-8 cannot be written as JSON
    };

    Kind kind = Kind::file;
    FileError fileError{};   // file
    std::size_t line = 0;    // syntax, value: counted from 1
    std::size_t column = 0;  // syntax: counted from 1, in code points
    std::string detail{};    // syntax, value, encoding: what was found or expected

    std::string description() const;

    bool operator==(const ConfigError&) const = default;
};

struct Config {
    std::string defaultProfile = "Default";  // used when no rule matches
    std::vector<Rule> rules;                 // checked from first to last
    bool logFullURLs = false;

    // Where the user's own file lives; constant for the life of the process.
    static const std::filesystem::path& fileURL();

    // Any fault rejects the whole file: no rule is ever dropped in silence.
    static std::expected<Config, ConfigError> load(const std::filesystem::path& path);
    static std::expected<Config, ConfigError> decode(std::string_view json);

    // Creates missing folders and replaces the file atomically (core/support/AtomicFile.h).
    std::expected<void, ConfigError> save(const std::filesystem::path& path) const;
    std::expected<std::string, ConfigError> encode() const;

    // Saves the built-in defaults unless something, whatever it is, already exists at `path`; true
    // when it made the file.
    static std::expected<bool, ConfigError> ensureExists(const std::filesystem::path& path);

    // Swaps the rule with the one `offset` places further down. Nothing changes when there is no
    // such rule or place.
    void moveRule(const Uuid& id, std::ptrdiff_t offset);
    // Puts the rule where the target stands; at the end when there is no such target. Nothing
    // changes when there is no such rule or it is its own target.
    void moveRule(const Uuid& id, const std::optional<Uuid>& target);

    bool operator==(const Config&) const = default;
};

}  // namespace ferrivane
