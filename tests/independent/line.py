"""The slave's end of a line: a pseudo-terminal, or a TCP port of this machine."""
import errno
import fcntl
import heapq
import os
import select
import socket
import threading
import time
import tty


class PtyEnd:
    """A pseudo-terminal; `name` is the device that the master opens."""

    def __init__(self, link=None):
        self._fd, self._device = os.openpty()
        tty.setraw(self._device)
        os.set_blocking(self._fd, False)
        self.name = os.ttyname(self._device)
        self._link = link
        if link:
            if os.path.lexists(link):
                os.unlink(link)
            os.symlink(self.name, link)
            self.name = link

    def options(self):
        return ["--serial", self.name]

    def descriptors(self):
        return [self._fd]

    def ready(self, _):
        try:
            return os.read(self._fd, 4096)
        except OSError as error:
            if error.errno in (errno.EAGAIN, errno.EIO):
                return b""
            raise

    def write(self, data):
        try:
            os.write(self._fd, data)
        except BlockingIOError:
            pass  # nobody reads: as on a wire, it is gone

    def hang_up(self):
        """A cable has nothing to close."""

    def close(self):
        if self._link and os.path.islink(self._link):
            os.unlink(self._link)
        os.close(self._fd)
        os.close(self._device)


class TcpEnd:
    """A port on loopback for one master at a time; a second takes the first one's place."""

    def __init__(self, port=0):
        self._listener = socket.create_server(("127.0.0.1", port))
        self._connection = None
        self.name = "127.0.0.1:%d" % self._listener.getsockname()[1]

    def options(self):
        return ["--tcp", self.name]

    def descriptors(self):
        return [self._listener] + ([self._connection] if self._connection else [])

    def ready(self, which):
        if which is self._listener:
            self.hang_up()
            self._connection = self._listener.accept()[0]
            self._connection.setblocking(False)
            self._connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            return b""
        try:
            data = self._connection.recv(4096)
        except BlockingIOError:
            return b""
        except OSError:
            data = b""
        if not data:
            self.hang_up()
        return data

    def write(self, data):
        if self._connection:
            try:
                self._connection.send(data)
            except BlockingIOError:
                pass
            except OSError:
                self.hang_up()

    def hang_up(self):
        if self._connection:
            self._connection.close()
        self._connection = None

    def close(self):
        self.hang_up()
        self._listener.close()


class Server(threading.Thread):
    """Hands what arrives to `answer(bytes) -> [(seconds from now, bytes)]` and sends what it says."""

    def __init__(self, end, answer):
        super().__init__(daemon=True)
        self.end = end
        self._answer = answer
        self._pending = []
        self._order = 0
        self._wake, self._stopper = os.pipe()
        fcntl.fcntl(self._wake, fcntl.F_SETFD, fcntl.FD_CLOEXEC)
        self.error = None

    def run(self):
        try:
            while self._step():
                pass
        except Exception as error:  # told to whoever stops us
            self.error = error

    def _step(self):
        timeout = max(0.0, self._pending[0][0] - time.monotonic()) if self._pending else None
        readable, _, _ = select.select(self.end.descriptors() + [self._wake], [], [], timeout)
        if self._wake in readable:
            return False
        for which in readable:
            data = self.end.ready(which)
            if data:
                self._schedule(self._answer(data))
        self._send_due()
        return True

    def _schedule(self, pieces):
        now = time.monotonic()
        for seconds, data in pieces:
            self._order += 1
            heapq.heappush(self._pending, (now + seconds, self._order, data))

    def _send_due(self):
        now = time.monotonic()
        while self._pending and self._pending[0][0] <= now:
            data = heapq.heappop(self._pending)[2]
            if data is None:
                self.end.hang_up()
            else:
                self.end.write(data)

    def stop(self):
        os.write(self._stopper, b"x")
        self.join()
        self.end.close()
        os.close(self._wake)
        os.close(self._stopper)
        if self.error:
            raise self.error
