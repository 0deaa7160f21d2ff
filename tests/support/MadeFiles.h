#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace quibel::test {

/// Makes `out` of `in` by a program. In the command "{in}" and "{out}" stand for the
/// files. Throws as run() does.
void runOn(const std::vector<std::string>& command, const std::filesystem::path& in,
           const std::filesystem::path& out);

/// The same, but what was made is kept in the build's folder and copied from there when the same
/// command is to make a file of the same bytes again, in any process.
void makeFile(const std::vector<std::string>& command, const std::filesystem::path& in,
              const std::filesystem::path& out);

}  // namespace quibel::test
