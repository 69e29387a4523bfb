"""A Wayland compositor seen through a filter that hides some of what it offers."""

import array
import os
import socket
import struct
import threading

DISPLAY, GET_REGISTRY = 1, 1
GLOBAL = 0
HEADER = struct.Struct("=II")


def messages(buffer):
    """Takes whole messages off the front: each object, its opcode and all its bytes."""
    while len(buffer) >= HEADER.size:
        target, word = HEADER.unpack_from(buffer)
        size = word >> 16
        if len(buffer) < size:
            return
        yield target, word & 0xFFFF, bytes(buffer[:size])
        del buffer[:size]


class _Client:
    """One program's connection, passed on in both directions."""

    def __init__(self, client, server, hidden):
        self._client, self._server, self._hidden = client, server, hidden
        self._registries = set()
        for source, sink, keep in ((client, server, self._note), (server, client, self._shows)):
            threading.Thread(target=self._pass_on, args=(source, sink, keep), daemon=True).start()

    def _pass_on(self, source, sink, keep):
        buffer, descriptors = bytearray(), []
        try:
            while True:
                data, more, _flags, _address = socket.recv_fds(source, 65536, 28)
                if not data:
                    break
                buffer += data
                descriptors += more
                kept = b"".join(message for target, opcode, message in messages(buffer)
                                if keep(target, opcode, message))
                if not kept:
                    continue
                sent = sink.sendmsg([kept], [(socket.SOL_SOCKET, socket.SCM_RIGHTS,
                                              array.array("i", descriptors))] if descriptors else [])
                sink.sendall(kept[sent:])
                for descriptor in descriptors:
                    os.close(descriptor)
                descriptors = []
        except OSError:
            pass  # one of the two has gone
        for end in (self._client, self._server):
            try:
                end.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass

    def _note(self, target, opcode, message):
        if (target, opcode) == (DISPLAY, GET_REGISTRY):
            self._registries.add(struct.unpack_from("=I", message, HEADER.size)[0])
        return True

    def _shows(self, target, opcode, message):
        if target not in self._registries or opcode != GLOBAL:
            return True
        length, = struct.unpack_from("=I", message, HEADER.size + 4)
        begin = HEADER.size + 8
        return message[begin:begin + length - 1].decode() not in self._hidden


class WaylandFilter:
    """Listens at `path` for programs that shall see the compositor without the hidden interfaces."""

    def __init__(self, path, compositor, hidden):
        self.path = path
        self._listener = socket.socket(socket.AF_UNIX)
        self._listener.bind(path)
        self._listener.listen()
        self._compositor, self._hidden = compositor, hidden
        threading.Thread(target=self._serve, daemon=True).start()

    def _serve(self):
        while True:
            try:
                client, _address = self._listener.accept()
            except OSError:
                return
            server = socket.socket(socket.AF_UNIX)
            server.connect(self._compositor)
            _Client(client, server, self._hidden)

    def close(self):
        """No more programs are let in."""
        self._listener.shutdown(socket.SHUT_RDWR)
        self._listener.close()
