#pragma once

#include "Tessarune/platform/host/LateLibrary.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

/// The functions of FFmpeg that this folder calls, under their own names.
namespace tessarune::ffmpeg {

inline constinit LateLibrary utilLibrary("libavutil.so." AV_STRINGIFY(LIBAVUTIL_VERSION_MAJOR));
inline constinit LateLibrary
    resamplingLibrary("libswresample.so." AV_STRINGIFY(LIBSWRESAMPLE_VERSION_MAJOR));
inline constinit LateLibrary codecsLibrary("libavcodec.so." AV_STRINGIFY(LIBAVCODEC_VERSION_MAJOR));
inline constinit LateLibrary
    containersLibrary("libavformat.so." AV_STRINGIFY(LIBAVFORMAT_VERSION_MAJOR));
inline constinit LateLibrary
    filtersLibrary("libavfilter.so." AV_STRINGIFY(LIBAVFILTER_VERSION_MAJOR));

// GCC warns that a type loses its attributes as a template argument. The attributes are not needed
// here.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-attributes"
#define TESSARUNE_CALL(library, name)                                                              \
    inline constinit const LateFunction<decltype(::name)> name(library, #name)

TESSARUNE_CALL(utilLibrary, av_channel_layout_copy);
TESSARUNE_CALL(utilLibrary, av_channel_layout_default);
TESSARUNE_CALL(utilLibrary, av_channel_layout_describe);
TESSARUNE_CALL(utilLibrary, av_channel_layout_uninit);
TESSARUNE_CALL(utilLibrary, av_frame_alloc);
TESSARUNE_CALL(utilLibrary, av_frame_free);
TESSARUNE_CALL(utilLibrary, av_frame_get_buffer);
TESSARUNE_CALL(utilLibrary, av_frame_unref);
TESSARUNE_CALL(utilLibrary, av_freep);
TESSARUNE_CALL(utilLibrary, av_log_set_level);
TESSARUNE_CALL(utilLibrary, av_malloc);
TESSARUNE_CALL(utilLibrary, av_opt_set_double);
TESSARUNE_CALL(utilLibrary, av_strdup);
TESSARUNE_CALL(utilLibrary, av_strerror);

TESSARUNE_CALL(resamplingLibrary, swr_alloc_set_opts2);
TESSARUNE_CALL(resamplingLibrary, swr_convert);
TESSARUNE_CALL(resamplingLibrary, swr_free);
TESSARUNE_CALL(resamplingLibrary, swr_get_out_samples);
TESSARUNE_CALL(resamplingLibrary, swr_init);

TESSARUNE_CALL(codecsLibrary, av_packet_alloc);
TESSARUNE_CALL(codecsLibrary, av_packet_free);
TESSARUNE_CALL(codecsLibrary, av_packet_rescale_ts);
TESSARUNE_CALL(codecsLibrary, av_packet_unref);
TESSARUNE_CALL(codecsLibrary, avcodec_alloc_context3);
TESSARUNE_CALL(codecsLibrary, avcodec_find_encoder);
TESSARUNE_CALL(codecsLibrary, avcodec_flush_buffers);
TESSARUNE_CALL(codecsLibrary, avcodec_free_context);
TESSARUNE_CALL(codecsLibrary, avcodec_open2);
TESSARUNE_CALL(codecsLibrary, avcodec_parameters_from_context);
TESSARUNE_CALL(codecsLibrary, avcodec_parameters_to_context);
TESSARUNE_CALL(codecsLibrary, avcodec_receive_frame);
TESSARUNE_CALL(codecsLibrary, avcodec_receive_packet);
TESSARUNE_CALL(codecsLibrary, avcodec_send_frame);
TESSARUNE_CALL(codecsLibrary, avcodec_send_packet);

TESSARUNE_CALL(containersLibrary, av_find_best_stream);
TESSARUNE_CALL(containersLibrary, av_interleaved_write_frame);
TESSARUNE_CALL(containersLibrary, av_read_frame);
TESSARUNE_CALL(containersLibrary, av_seek_frame);
TESSARUNE_CALL(containersLibrary, av_write_trailer);
TESSARUNE_CALL(containersLibrary, avformat_alloc_context);
TESSARUNE_CALL(containersLibrary, avformat_alloc_output_context2);
TESSARUNE_CALL(containersLibrary, avformat_close_input);
TESSARUNE_CALL(containersLibrary, avformat_find_stream_info);
TESSARUNE_CALL(containersLibrary, avformat_free_context);
TESSARUNE_CALL(containersLibrary, avformat_index_get_entry);
TESSARUNE_CALL(containersLibrary, avformat_new_stream);
TESSARUNE_CALL(containersLibrary, avformat_open_input);
TESSARUNE_CALL(containersLibrary, avformat_write_header);
TESSARUNE_CALL(containersLibrary, avio_alloc_context);
TESSARUNE_CALL(containersLibrary, avio_closep);
TESSARUNE_CALL(containersLibrary, avio_context_free);
TESSARUNE_CALL(containersLibrary, avio_flush);
TESSARUNE_CALL(containersLibrary, avio_open);
TESSARUNE_CALL(containersLibrary, avio_seek);

TESSARUNE_CALL(filtersLibrary, av_buffersink_get_frame);
TESSARUNE_CALL(filtersLibrary, av_buffersrc_add_frame);
TESSARUNE_CALL(filtersLibrary, avfilter_get_by_name);
TESSARUNE_CALL(filtersLibrary, avfilter_graph_alloc);
TESSARUNE_CALL(filtersLibrary, avfilter_graph_config);
TESSARUNE_CALL(filtersLibrary, avfilter_graph_create_filter);
TESSARUNE_CALL(filtersLibrary, avfilter_graph_free);
TESSARUNE_CALL(filtersLibrary, avfilter_link);

#undef TESSARUNE_CALL
#pragma GCC diagnostic pop

} // namespace tessarune::ffmpeg
