"""Open Sound Control over UDP: as much of it as a host's remote control needs."""

import socket
import struct
import time


def padded(data):
    return data + bytes(4 - len(data) % 4)


def message(path, *arguments):
    tags, data = ",", b""
    for argument in arguments:
        if isinstance(argument, str):
            tags, data = tags + "s", data + padded(argument.encode())
        elif isinstance(argument, float):
            tags, data = tags + "f", data + struct.pack(">f", argument)
        else:
            tags, data = tags + "i", data + struct.pack(">i", argument)
    return padded(path.encode()) + padded(tags.encode()) + data


def text_at(data, at):
    end = data.index(b"\0", at)
    return data[at:end].decode(errors="replace"), at + (end - at) // 4 * 4 + 4


def messages_in(packet):
    """Pairs of a path and its arguments; of a type unknown here, none from the first such on."""
    if packet.startswith(b"#bundle\0"):
        at = 16
        while at < len(packet):
            size, = struct.unpack_from(">i", packet, at)
            yield from messages_in(packet[at + 4:at + 4 + size])
            at += 4 + size
        return
    path, at = text_at(packet, 0)
    tags, at = text_at(packet, at)
    arguments = []
    for tag in tags[1:]:
        if tag == "s":
            argument, at = text_at(packet, at)
        elif tag in "ifhd":
            argument, = struct.unpack_from(">" + tag.replace("h", "q"), packet, at)
            at += 4 if tag in "if" else 8
        else:
            break
        arguments.append(argument)
    yield path, arguments


class Remote:
    """Sends to one port of this machine and receives what is sent back."""

    def __init__(self, port):
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.bind(("127.0.0.1", 0))
        self.socket.connect(("127.0.0.1", port))

    def close(self):
        self.socket.close()

    def send(self, path, *arguments):
        self.socket.send(message(path, *arguments))

    def ask(self, path, seconds=5.0):
        """The first argument of the answer, which has the same path. Packets get lost, so it asks repeatedly."""
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            self.send(path)
            again = time.monotonic() + 0.5
            while (left := again - time.monotonic()) > 0:
                self.socket.settimeout(left)
                try:
                    packet = self.socket.recv(65536)
                except OSError:  # nothing came, or nobody listens yet
                    break
                for answered, arguments in messages_in(packet):
                    if answered == path and arguments:
                        return arguments[0]
        raise AssertionError(f"no answer to {path} in {seconds} s")
