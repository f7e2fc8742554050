#include "media/jpeg/libjpeg.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
//
#include <jpeglib.h>

namespace tavra::test {
namespace {

struct Errors {
    jpeg_error_mgr manager;
    std::jmp_buf back;
};

void leave(j_common_ptr jpeg) {
    char text[JMSG_LENGTH_MAX];
    jpeg->err->format_message(jpeg, text);
    ADD_FAILURE() << "libjpeg: " << text;
    std::longjmp(reinterpret_cast<Errors*>(jpeg->err)->back, 1);
}

void note(j_common_ptr jpeg, int level) {
    if (level < 0) ++jpeg->err->num_warnings;
}

jpeg_error_mgr* quiet(Errors& errors) {
    jpeg_std_error(&errors.manager);
    errors.manager.error_exit = leave;
    errors.manager.emit_message = note;
    return &errors.manager;
}

void takeCoefficients(jpeg_decompress_struct& jpeg, Coefficients& result) {
    jvirt_barray_ptr* const arrays = jpeg_read_coefficients(&jpeg);
    for (int c = 0; c < jpeg.num_components; ++c) {
        const jpeg_component_info& info = jpeg.comp_info[c];
        const auto horizontal = static_cast<JDIMENSION>(info.h_samp_factor),
                   vertical = static_cast<JDIMENSION>(info.v_samp_factor);
        Coefficients::Component component;
        component.across = (info.width_in_blocks + horizontal - 1) / horizontal * horizontal;
        component.down = (info.height_in_blocks + vertical - 1) / vertical * vertical;
        for (JDIMENSION y = 0; y < component.down; ++y) {
            const JBLOCKARRAY rows =
                jpeg.mem->access_virt_barray(reinterpret_cast<j_common_ptr>(&jpeg), arrays[c], y, 1, FALSE);
            for (std::size_t x = 0; x < component.across; ++x) {
                std::copy_n(rows[0][x], 64, component.blocks.emplace_back().begin());
            }
        }
        std::copy_n(jpeg.quant_tbl_ptrs[info.quant_tbl_no]->quantval, 64, component.steps.begin());
        result.components.push_back(component);
    }
}

}  // namespace

Decoded decode(const ByteVector& stream) {
    Decoded result;
    jpeg_decompress_struct jpeg;
    Errors errors;
    jpeg.err = quiet(errors);
    jpeg_create_decompress(&jpeg);
    if (setjmp(errors.back) == 0) {
        jpeg_mem_src(&jpeg, stream.data(), stream.size());
        jpeg_read_header(&jpeg, TRUE);
        jpeg_start_decompress(&jpeg);
        result.width = jpeg.output_width;
        result.height = jpeg.output_height;
        result.components = static_cast<unsigned>(jpeg.output_components);
        const std::size_t step = std::size_t{result.width} * result.components;
        result.samples.resize(step * result.height);
        while (jpeg.output_scanline < jpeg.output_height) {
            JSAMPROW row = &result.samples[jpeg.output_scanline * step];
            jpeg_read_scanlines(&jpeg, &row, 1);
        }
        jpeg_finish_decompress(&jpeg);
        result.warnings = jpeg.err->num_warnings;
    }
    jpeg_destroy_decompress(&jpeg);
    return result;
}

Coefficients readCoefficients(const ByteVector& stream) {
    Coefficients result;
    jpeg_decompress_struct jpeg;
    Errors errors;
    jpeg.err = quiet(errors);
    jpeg_create_decompress(&jpeg);
    if (setjmp(errors.back) == 0) {
        jpeg_mem_src(&jpeg, stream.data(), stream.size());
        jpeg_read_header(&jpeg, TRUE);
        takeCoefficients(jpeg, result);
        jpeg_finish_decompress(&jpeg);
        result.warnings = jpeg.err->num_warnings;
    }
    jpeg_destroy_decompress(&jpeg);
    return result;
}

ByteVector encodedByLibjpeg(const JpegJob& job) {
    jpeg_compress_struct jpeg;
    Errors errors;
    jpeg.err = quiet(errors);
    jpeg_create_compress(&jpeg);
    unsigned char* memory = nullptr;
    unsigned long size = 0;
    ByteVector result;
    if (setjmp(errors.back) == 0) {
        jpeg_mem_dest(&jpeg, &memory, &size);
        jpeg.image_width = job.width;
        jpeg.image_height = job.height;
        jpeg.input_components = static_cast<int>(job.channels);
        jpeg.in_color_space = job.channels == 1              ? JCS_GRAYSCALE
                              : job.source == JpegColor::Bgr ? JCS_EXT_BGR
                                                             : JCS_RGB;
        jpeg_set_defaults(&jpeg);
        jpeg_set_quality(&jpeg, static_cast<int>(job.quality), TRUE);
        jpeg.dct_method = JDCT_ISLOW;
        jpeg.comp_info[0].h_samp_factor = job.sampling == JpegSampling::Sampling444 ? 1 : 2;
        jpeg.comp_info[0].v_samp_factor = job.sampling == JpegSampling::Sampling411 ? 2 : 1;
        jpeg_start_compress(&jpeg, TRUE);
        while (jpeg.next_scanline < jpeg.image_height) {
            JSAMPROW row = const_cast<JSAMPROW>(job.pixel(0, jpeg.next_scanline));
            jpeg_write_scanlines(&jpeg, &row, 1);
        }
        jpeg_finish_compress(&jpeg);
        result.assign(memory, memory + size);
    }
    jpeg_destroy_compress(&jpeg);
    std::free(memory);
    return result;
}

}  // namespace tavra::test
