"""A loopback server of a model's files, correct unless a test scripts its next replies."""

import http.server
import re
import socket
import struct
import threading

ETAG = '"version-1"'
LAST_MODIFIED = "Mon, 01 Jan 2024 00:00:00 GMT"


class ModelServer:
    """Serves `content` at every path; `script` holds the replies to the next requests. The paths that end
    in one of the names in `beside` have contents, requests and a script of their own."""

    def __init__(self, content, tls=None, beside=None):
        self.content = content
        self.beside = beside or {}
        self.beside_script = []
        self.beside_requests = []
        self.etag = ETAG
        self.script = []
        self.default = honest
        self.requests = []
        self.serving = threading.Semaphore(0)
        self.closing = threading.Event()
        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), _Handler)
        self._server.daemon_threads = True
        self._server.model = self
        self.scheme = "https" if tls else "http"
        if tls:
            self._server.socket = tls.wrap_socket(self._server.socket, server_side=True)
        threading.Thread(target=self._server.serve_forever, args=(0.01,), daemon=True).start()

    @property
    def host(self):
        return f"127.0.0.1:{self._server.server_address[1]}"

    @property
    def url(self):
        return f"{self.scheme}://{self.host}"

    def ranges(self):
        """The Range headers of the requests so far; None for the whole file."""
        return [headers.get("Range") for _, headers in self.requests]

    def wait_for_request(self):
        """Waits for one more request."""
        assert self.serving.acquire(timeout=20), "no request came"

    def close(self):
        self.closing.set()
        self._server.shutdown()
        self._server.server_close()


class _Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        model = self.server.model
        self.close_connection = True
        name = self.path.rsplit("/", 1)[-1]
        self.content = model.beside.get(name, model.content)
        request = (self.path, dict(self.headers))
        if name in model.beside:
            model.beside_requests.append(request)
            reply = model.beside_script.pop(0) if model.beside_script else honest
        else:
            model.requests.append(request)
            reply = model.script.pop(0) if model.script else model.default
            model.serving.release()
        try:
            reply(self, model)
        except OSError:
            pass  # The client closed the connection, as some tests expect.

    def head(self, status, **fields):
        """Sends status and headers; underscores in names stand for hyphens."""
        self.send_response(status)
        for name, value in fields.items():
            self.send_header(name.replace("_", "-"), str(value))
        self.end_headers()

    def wait_for_leaving(self):
        """Waits until the client closes the connection or the server ends."""
        self.connection.settimeout(0.05)
        while not self.server.model.closing.is_set():
            try:
                if not self.connection.recv(1):
                    return
            except TimeoutError:
                continue

    def log_message(self, *arguments):
        pass


def offset_of(handler, model):
    """The first byte of the requested range; None for the whole file."""
    asked = re.fullmatch(r"bytes=(\d+)-", handler.headers.get("Range", ""))
    condition = handler.headers.get("If-Range", model.etag)
    return int(asked[1]) if asked and condition in (model.etag, LAST_MODIFIED) else None


def send_head(handler, model):
    """Sends correct headers; returns the body."""
    offset, total = offset_of(handler, model), len(handler.content)
    common = {"ETag": model.etag, "Last_Modified": LAST_MODIFIED}
    if offset is None:
        handler.head(200, Content_Length=total, **common)
        return handler.content
    if offset >= total:
        handler.head(416, Content_Range=f"bytes */{total}", Content_Length=0)
        return b""
    handler.head(206, Content_Length=total - offset,
                 Content_Range=f"bytes {offset}-{total - 1}/{total}", **common)
    return handler.content[offset:]


def honest(handler, model):
    handler.wfile.write(send_head(handler, model))


def ignoring_ranges(handler, model):
    del handler.headers["Range"]
    honest(handler, model)


def cut(count):
    """Promises everything, closes after `count` bytes."""
    return lambda handler, model: handler.wfile.write(send_head(handler, model)[:count])


def reset(count):
    """Like cut, but as a broken connection."""
    def reply(handler, model):
        handler.wfile.write(send_head(handler, model)[:count])
        handler.wfile.flush()
        handler.connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        handler.connection.close()
    return reply


def stall(count):
    """Sends `count` bytes and then nothing more."""
    def reply(handler, model):
        handler.wfile.write(send_head(handler, model)[:count])
        handler.wait_for_leaving()
    return reply


def paced(block, pause):
    """Correct, with a pause in seconds after every `block` bytes."""
    def reply(handler, model):
        body = send_head(handler, model)
        for start in range(0, len(body), block):
            handler.wfile.write(body[start:start + block])
            model.closing.wait(pause)
    return reply


def silent(handler, _model):
    handler.wait_for_leaving()


def status(code, **fields):
    def reply(handler, _model):
        handler.head(code, Content_Length=5, **fields)
        handler.wfile.write(b"sorry")
    return reply


def redirect(place, code=302):
    return lambda handler, _model: handler.head(code, Location=place, ETag='"of the redirect"',
                                                Content_Length=0)


def bytes_of(content, code=200, **fields):
    """Exactly these headers and bytes; then closes the connection."""
    def reply(handler, _model):
        handler.head(code, **fields)
        handler.wfile.write(content)
    return reply


def promised(content, count, **fields):
    """The whole length of `content`, but only its first `count` bytes."""
    return bytes_of(content[:count], Content_Length=len(content), **fields)


def in_chunks(content, **fields):
    """All of `content` in chunks, which name no length."""
    def reply(handler, _model):
        handler.protocol_version = "HTTP/1.1"
        handler.head(200, Transfer_Encoding="chunked", **fields)
        handler.wfile.write(b"%x\r\n%s\r\n0\r\n\r\n" % (len(content), content))
    return reply


def stalling_without_length(content):
    """A reply of unknown length that sends `content` and then nothing more."""
    def reply(handler, _model):
        handler.head(200)
        handler.wfile.write(content)
        handler.wfile.flush()
        handler.wait_for_leaving()
    return reply


def raw(data):
    """Bytes that are not HTTP."""
    return lambda handler, _model: handler.wfile.write(data)


def chunked(handler, model):
    """A chunked reply, which has no length."""
    handler.protocol_version = "HTTP/1.1"
    handler.head(200, Transfer_Encoding="chunked", ETag=model.etag)
    for start in range(0, len(model.content), 100_000):
        piece = model.content[start:start + 100_000]
        handler.wfile.write(b"%x\r\n%s\r\n" % (len(piece), piece))
    handler.wfile.write(b"0\r\n\r\n")


def partial(content_range, body=None):
    """A 206 with this Content-Range; by default the body is the right one."""
    def reply(handler, model):
        rest = handler.content[offset_of(handler, model) or 0:] if body is None else body
        handler.head(206, Content_Range=content_range, Content_Length=len(rest), ETag=model.etag)
        handler.wfile.write(rest)
    return reply
