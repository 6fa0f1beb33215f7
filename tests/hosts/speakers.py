"""What other programs read about the speakers in kavhost's files."""

import math
import struct

from support import RATE, HostTest

# The layouts by their names in ffprobe, their masks, and what mediainfo shows for WAV.
LAYOUTS = (("2.1", 0xB, "L R LFE"), ("4.0", 0x107, "L R C Cb"), ("quad", 0x33, "L R Lb Rb"),
           ("5.1", 0x3F, "L R C LFE Lb Rb"), ("5.1(side)", 0x60F, "L R C LFE Ls Rs"),
           ("7.1", 0x63F, "L R C LFE Lb Rb Ls Rs"), ("7.1(wide)", 0xFF, "L R C LFE Lb Rb Lc Rc"))


def write_wav(file, mask, frames=2400):
    """16 bits, a tone per channel, and the extensible header."""
    channels = mask.bit_count()
    data = b"".join(struct.pack("<h", round(3000 * math.sin(math.tau * 200 * (c + 1) * i / RATE)))
                    for i in range(frames) for c in range(channels))
    head = struct.pack("<HHIIHHHHI", 0xFFFE, channels, RATE, RATE * 2 * channels, 2 * channels, 16, 22, 16, mask)
    head += bytes.fromhex("0100000000001000800000aa00389b71")
    body = b"WAVEfmt " + struct.pack("<I", len(head)) + head + b"data" + struct.pack("<I", len(data)) + data
    file.write_bytes(b"RIFF" + struct.pack("<I", len(body)) + body)


class Speakers(HostTest):
    def test_other_programs_read_the_layout(self):
        for name, mask, shown in LAYOUTS:
            source = self.folder / "in.wav"
            write_wav(source, mask)
            for kind in ("wav", "flac", "aiff"):
                with self.subTest(layout=name, kind=kind):
                    out = self.folder / f"out.{kind}"
                    self.kavhost("render", source, "-o", out)
                    self.assertEqual(self.probe(out), name)
                    self.assertEqual(self.run_program("sox", "--i", "-c", out).strip(), str(mask.bit_count()))
                    if kind == "wav":
                        told = self.run_program("mediainfo", "--Inform=Audio;%ChannelLayout%", out)
                        self.assertEqual(told.strip(), shown)

    def test_other_programs_read_the_layout_of_an_ogg_file(self):
        source, out = self.folder / "in.wav", self.folder / "out.ogg"
        for name, mask in (("3.0", 0x7), ("quad", 0x33), ("5.0", 0x37), ("5.1", 0x3F), ("6.1", 0x70F), ("7.1", 0x63F)):
            with self.subTest(layout=name):
                write_wav(source, mask)
                self.kavhost("render", source, "-o", out)
                self.assertEqual(self.probe(out), name)
                self.assertEqual(self.run_program("sox", "--i", "-c", out).strip(), str(mask.bit_count()))

    def probe(self, file):
        return self.run_program("ffprobe", "-v", "error", "-show_entries", "stream=channel_layout", "-of", "csv=p=0",
                                file).strip().strip(",")
