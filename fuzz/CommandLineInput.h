/// @file
/// An input taken as a command line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// The arguments of a program: its name, then the pieces of the input, between which zero bytes stand.
class CommandLineInput {
public:
    CommandLineInput(const std::uint8_t* data, std::size_t size) : _texts{"program", ""} {
        for (std::size_t i = 0; i < size; ++i) {
            if (data[i] == 0) {
                _texts.emplace_back();
            } else {
                _texts.back().push_back(static_cast<char>(data[i]));
            }
        }
        for (std::string& text : _texts) {
            _argv.push_back(text.data());
        }
        _argv.push_back(nullptr);
    }

    int Count() const { return static_cast<int>(_texts.size()); }
    char** Arguments() { return _argv.data(); }
    const std::vector<std::string>& Texts() const { return _texts; }

private:
    std::vector<std::string> _texts;
    std::vector<char*> _argv; ///< With a null behind the last.
};
