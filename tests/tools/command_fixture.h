// The command as a person runs it: a process of its own in a folder of its own, with virtual cameras only.
#pragma once

#include <gtest/gtest.h>
#include <png.h>
#include <sys/wait.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "support/temp_folder.h"

namespace tavra::test {

struct Outcome {
    int exitCode = -1;
    std::string output;  // standard output and standard error, as they came
};

struct Picture {
    std::uint32_t width = 0, height = 0;
    std::vector<std::uint8_t> rgb;
};

class CommandTest : public ::testing::Test {
  protected:
    // Runs `tavra <arguments>` in the test's folder.
    Outcome run(const std::string& arguments) const { return outcomeOf(start(arguments)); }

    // The same, not waiting for its end.
    FILE* start(const std::string& arguments) const {
        const std::string line = "cd '" + folder.path().string() + "' && env -u TAVRA_VIRTUAL_CAMERAS " +
                                 environment + " TAVRA_USBD='" + TAVRA_USBD_LIBRARY + "' '" + TAVRA_COMMAND +
                                 "' " + arguments + " 2>&1";
        return popen(line.c_str(), "r");
    }

    static Outcome outcomeOf(FILE* pipe) {
        Outcome outcome;
        std::array<char, 4096> buffer;
        while (const std::size_t got = fread(buffer.data(), 1, buffer.size(), pipe)) {
            outcome.output.append(buffer.data(), got);
        }
        const int status = pclose(pipe);
        outcome.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return outcome;
    }

    // "WIDTHxHEIGHT channels N" as libpng reads it.
    std::string pngLayout(const std::string& name) const {
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        if (!png_image_begin_read_from_file(&image, (folder / name).c_str())) return image.message;
        const std::string text = std::to_string(image.width) + "x" + std::to_string(image.height) +
                                 ((image.format & PNG_FORMAT_FLAG_COLOR) != 0 ? " color" : " gray");
        png_image_free(&image);
        return text;
    }

    // The pixels of a PNG file, three bytes each, dense; none if it cannot be read.
    Picture picture(const std::string& name) const {
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        if (!png_image_begin_read_from_file(&image, (folder / name).c_str())) return {};
        image.format = PNG_FORMAT_RGB;
        Picture read{image.width, image.height, std::vector<std::uint8_t>(PNG_IMAGE_SIZE(image))};
        if (!png_image_finish_read(&image, nullptr, read.rgb.data(), 0, nullptr)) return {};
        return read;
    }

    static std::vector<nlohmann::json> lines(const std::string& output) {
        std::vector<nlohmann::json> objects;
        std::istringstream stream(output);
        for (std::string line; std::getline(stream, line);) {
            if (line.starts_with("{")) objects.push_back(nlohmann::json::parse(line));
        }
        return objects;
    }

    TempFolder folder;
    std::string environment;  // more of it for the command: NAME=VALUE, as the shell takes them
};

}  // namespace tavra::test
