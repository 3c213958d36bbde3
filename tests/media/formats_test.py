"""Records every payload format from its encoder and payloader, and compares with the bytes that went in there.

On the server a tee in front of the payloader writes what is sent into a file.
"""

import pathlib
import tempfile
import unittest

import media

ADTS_HEADER = 7
VISUAL_FRAMES = 60


def with_dump(source, payloader, dump):
    return (f"( {source} ! tee name=dump ! queue ! {payloader} "
            f"dump. ! queue ! filesink location={dump} )")


def audio(buffers, samples, rate, channels):
    return (f"audiotestsrc num-buffers={buffers} samplesperbuffer={samples} ! "
            f"audio/x-raw,rate={rate},channels={channels}")


def adts_frames(data):
    """The frames of an ADTS stream without their headers."""
    frames = []
    while data:
        assert data[:2] == b"\xff\xf1", data[:2]
        size = (data[3] & 3) << 11 | data[4] << 3 | data[5] >> 5
        frames.append(data[ADTS_HEADER:size])
        data = data[size:]
    return frames


class FormatsTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.output = pathlib.Path(folder.name) / "out"
        self.dump = pathlib.Path(folder.name) / "dump"

    def record(self, source, payloader, name, samples, options):
        """Gives the file's path, and the bytes in it and in front of the payloader."""
        with media.server("--launch", with_dump(source, payloader, self.dump)) as url:
            result = media.record(url, self.output, *options)
        self.assertEqual((0, ""), (result.returncode, result.stderr))
        self.assertRegex(result.stdout, rf"^track 0: \S+, {samples} samples, .* 0 lost, ended by the server -> ")
        path = self.output / name
        return path, path.read_bytes(), self.dump.read_bytes()

    def h264(self, *options):
        source = ("videotestsrc num-buffers=60 ! video/x-raw,width=320,height=240,framerate=25/1 ! "
                  "x264enc speed-preset=ultrafast bframes=2 key-int-max=20 ! "
                  "video/x-h264,stream-format=byte-stream,alignment=au")
        path, recorded, sent = self.record(source, "rtph264pay name=pay0 pt=96", "track0.h264", 60, options)
        units = media.units_of_stream(recorded)
        # In front: the parameter sets of the description.
        self.assertEqual([7, 8], [unit[0] & 0x1F for unit in units[:2]])
        self.assertEqual(media.units_of_stream(sent), units[2:])
        self.assertEqual(60, media.count_frames(path))

    def visual(self, *options):
        source = f"filesrc location={media.visual_clip(VISUAL_FRAMES)} ! qtdemux ! video/mpeg"
        path, recorded, sent = self.record(source, "rtpmp4vpay name=pay0 pt=96", "track0.m4v", VISUAL_FRAMES, options)
        # The payloader takes the configuration out of the stream; the description has it.
        config = sent[:sent.index(b"\0\0\1\xb3")]
        self.assertEqual(b"\0\0\1\xb0", config[:4])
        self.assertEqual(config + sent.replace(config, b""), recorded)
        self.assertEqual(VISUAL_FRAMES, media.count_frames(path))

    def aac(self, payloader, rate, channels, options):
        # The encoder has a delay: one frame more than came in.
        source = audio(80, 1024, rate, channels) + " ! avenc_aac"
        path, recorded, sent = self.record(source, payloader, "track0.aac", 81, options)
        self.assertEqual(sent, b"".join(adts_frames(recorded)))
        self.assertEqual(81, len(adts_frames(recorded)))
        self.assertEqual(81 * 1024, media.count_samples(path, rate, channels))

    def latm(self, *options):
        self.aac("rtpmp4apay name=pay0 pt=97", 44100, 2, options)

    def generic(self, *options):
        # The payloader announces its format in capitals, which the client does not take for the same.
        self.aac("rtpmp4gpay pt=97 ! capssetter name=pay0 caps=application/x-rtp,encoding-name=mpeg4-generic", 48000, 1,
                 options)

    def amr(self, *options):
        path, recorded, sent = self.record(audio(100, 160, 8000, 1) + " ! amrnbenc", "rtpamrpay name=pay0 pt=97",
                                           "track0.amr", 100, options)
        # The encoder's frames have their table-of-contents bytes in front.
        self.assertEqual(b"#!AMR\n" + sent, recorded)
        self.assertEqual(100 * 160, media.count_samples(path, 8000, 1))

    def test_h264_udp(self):
        self.h264()

    def test_h264_tcp(self):
        self.h264("--tcp")

    def test_visual_udp(self):
        self.visual()

    def test_visual_tcp(self):
        self.visual("--tcp")

    def test_latm_udp(self):
        self.latm()

    def test_latm_tcp(self):
        self.latm("--tcp")

    def test_generic_udp(self):
        self.generic()

    def test_generic_tcp(self):
        self.generic("--tcp")

    def test_amr_udp(self):
        self.amr()

    def test_amr_tcp(self):
        self.amr("--tcp")


if __name__ == "__main__":
    unittest.main()
