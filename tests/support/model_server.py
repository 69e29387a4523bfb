"""A loopback server of one file, honest unless a test tells it how to answer its next requests."""

import http.server
import re
import socket
import struct
import threading

ETAG = '"version-1"'
LAST_MODIFIED = "Mon, 01 Jan 2024 00:00:00 GMT"


class ModelServer:
    """Serves `content` at every path; `script` holds the answers to the next requests."""

    def __init__(self, content, tls=None):
        self.content = content
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
        """What the requests so far asked for, None for all of it."""
        return [headers.get("Range") for _, headers in self.requests]

    def wait_for_request(self):
        """Returns once one more request has come."""
        assert self.serving.acquire(timeout=20), "no request came"

    def close(self):
        self.closing.set()
        self._server.shutdown()
        self._server.server_close()


class _Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        model = self.server.model
        model.requests.append((self.path, dict(self.headers)))
        answer = model.script.pop(0) if model.script else model.default
        self.close_connection = True
        model.serving.release()
        try:
            answer(self, model)
        except OSError:
            pass  # The client has left, which is what some tests are about.

    def head(self, status, **fields):
        """Sends the answer's head; underscores in names stand for hyphens."""
        self.send_response(status)
        for name, value in fields.items():
            self.send_header(name.replace("_", "-"), str(value))
        self.end_headers()

    def wait_for_leaving(self):
        """Returns when the client has closed the connection, or the server ends."""
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
    """The first byte that is asked for and may be given as a range; None: the whole file."""
    asked = re.fullmatch(r"bytes=(\d+)-", handler.headers.get("Range", ""))
    condition = handler.headers.get("If-Range", model.etag)
    return int(asked[1]) if asked and condition in (model.etag, LAST_MODIFIED) else None


def send_head(handler, model):
    """An honest head; returns the bytes that have to follow."""
    offset, total = offset_of(handler, model), len(model.content)
    common = {"ETag": model.etag, "Last_Modified": LAST_MODIFIED}
    if offset is None:
        handler.head(200, Content_Length=total, **common)
        return model.content
    if offset >= total:
        handler.head(416, Content_Range=f"bytes */{total}", Content_Length=0)
        return b""
    handler.head(206, Content_Length=total - offset,
                 Content_Range=f"bytes {offset}-{total - 1}/{total}", **common)
    return model.content[offset:]


def honest(handler, model):
    handler.wfile.write(send_head(handler, model))


def ignoring_ranges(handler, model):
    del handler.headers["Range"]
    honest(handler, model)


def cut(count):
    """Promises all, ends after `count` bytes."""
    return lambda handler, model: handler.wfile.write(send_head(handler, model)[:count])


def reset(count):
    """Like cut, but as a broken connection."""
    def answer(handler, model):
        handler.wfile.write(send_head(handler, model)[:count])
        handler.wfile.flush()
        handler.connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        handler.connection.close()
    return answer


def stall(count):
    """Sends `count` bytes and then nothing more."""
    def answer(handler, model):
        handler.wfile.write(send_head(handler, model)[:count])
        handler.wait_for_leaving()
    return answer


def paced(block, pause):
    """Honest, but with a pause in seconds after every `block` bytes."""
    def answer(handler, model):
        body = send_head(handler, model)
        for start in range(0, len(body), block):
            handler.wfile.write(body[start:start + block])
            model.closing.wait(pause)
    return answer


def silent(handler, _model):
    handler.wait_for_leaving()


def status(code, **fields):
    def answer(handler, _model):
        handler.head(code, Content_Length=5, **fields)
        handler.wfile.write(b"sorry")
    return answer


def redirect(place, code=302):
    return lambda handler, _model: handler.head(code, Location=place, ETag='"of the redirect"',
                                                Content_Length=0)


def bytes_of(content, code=200, **fields):
    """Exactly these bytes under exactly this head, the connection's end being the end."""
    def answer(handler, _model):
        handler.head(code, **fields)
        handler.wfile.write(content)
    return answer


def raw(data):
    """Not even HTTP."""
    return lambda handler, _model: handler.wfile.write(data)


def chunked(handler, model):
    """HTTP/1.1's way of not knowing the length beforehand."""
    handler.protocol_version = "HTTP/1.1"
    handler.head(200, Transfer_Encoding="chunked", ETag=model.etag)
    for start in range(0, len(model.content), 100_000):
        piece = model.content[start:start + 100_000]
        handler.wfile.write(b"%x\r\n%s\r\n" % (len(piece), piece))
    handler.wfile.write(b"0\r\n\r\n")


def partial(content_range, body=None):
    """A 206 that says `content_range`; the bytes are those that would be right."""
    def answer(handler, model):
        rest = model.content[offset_of(handler, model) or 0:] if body is None else body
        handler.head(206, Content_Range=content_range, Content_Length=len(rest), ETag=model.etag)
        handler.wfile.write(rest)
    return answer
