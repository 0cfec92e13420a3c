"""Runs comparison scripts without their start-up cost: imports what they import once and forks for each comparison.

Started by a worker as `python -c TEXT DESCRIPTOR`, TEXT being this file: it is not looked up anywhere, so that it
always fits the program that talks to it. DESCRIPTOR is a socket that keeps the borders of messages. A request holds
the script and its arguments, separated by NULs; the answer is "begins", when the script is ready to be run, and then
one line:

    exit STATUS COMPARED    ended by itself; COMPARED is 1 when it opened both files, its last two arguments
    signal NUMBER 0         ended by a signal
    raised 0 0              an exception that it did not catch, a syntax error included
    memory 0 0              it ran out of memory

What scripts print goes where this process prints.
"""

import sys

sys.path.pop(0)                   # the working directory: its files are not to be executed
sys.dont_write_bytecode = True    # the scripts' folder may be read-only

import ast
import atexit
import contextlib
import gc
import os
import signal
import socket
import traceback
import types

REQUEST_SIZE = 1 << 17
WATCHED = frozenset(("open", "subprocess.Popen", "os.system", "os.exec", "os.posix_spawn"))

try:
    import ctypes
    _prctl = ctypes.CDLL(None).prctl
except (ImportError, OSError, AttributeError):
    _prctl = None


class Script:
    """A script, read and compiled once.

    What it does before its `if __name__ == "__main__":`, the imports above all, is done once as well. A script
    without such an end, or one that fails or prints on the way there, is run from its beginning each time.
    """

    def __init__(self, path):
        self.path = path
        self.folder = os.path.dirname(os.path.realpath(path))
        self.main = self._new_main()
        self.code = self.error = None
        try:
            with open(path, "rb") as file:
                tree = ast.parse(file.read(), path)
            self.code = compile(tree, path, "exec", dont_inherit=True)
        except (OSError, SyntaxError, ValueError) as error:
            self.error = error
            return
        if tree.body and ast.dump(tree.body[-1]).startswith(_GUARD):
            self._prepare(tree)

    def run(self, arguments):
        """Runs the script as the program that it is; ends as it ends."""
        self._enter(arguments)
        if self.error:
            raise self.error
        exec(self.code, self.main.__dict__)

    def _prepare(self, tree):
        body = compile(ast.Module(tree.body[:-1], []), self.path, "exec", dont_inherit=True)
        paths = list(sys.path)
        try:
            with _heard() as output:
                self._enter([])
                exec(body, self.main.__dict__)
            silent = os.fstat(output).st_size == 0
            os.close(output)
        except (Exception, SystemExit):    # it fails again, in its own words, for each comparison
            silent = False
        if silent:
            self.code = compile(ast.Module(tree.body[-1:], []), self.path, "exec", dont_inherit=True)
        else:
            self.main = self._new_main()
            sys.path[:] = paths

    def _enter(self, arguments):
        sys.argv = [self.path, *arguments]
        if self.folder not in sys.path:
            sys.path.insert(0, self.folder)
        sys.modules["__main__"] = self.main

    def _new_main(self):
        main = types.ModuleType("__main__")
        main.__file__ = self.path
        main.__builtins__ = __builtins__
        return main


_GUARD = ast.dump(ast.parse('if __name__ == "__main__": pass').body[0]).partition(", body=")[0]


@contextlib.contextmanager
def _heard():
    """Gives a file that gets what is printed in its block, instead of whoever reads the scripts' words."""
    kept = [os.dup(descriptor) for descriptor in (1, 2)]
    output = os.memfd_create("output")
    try:
        for descriptor in (1, 2):
            os.dup2(output, descriptor)
        yield output
    finally:
        for stream in (sys.stdout, sys.stderr):
            stream.flush()
        for descriptor, copy in zip((1, 2), kept):
            os.dup2(copy, descriptor)
            os.close(copy)


class Watch:
    """Notes which files a process opens or hands to another program."""

    def __init__(self, names):
        self._missing = set(names)
        self._busy = False
        sys.addaudithook(self._hook)

    @property
    def saw_all(self):
        """Whether every file was opened."""
        return not self._missing

    def _hook(self, event, arguments):
        if event not in WATCHED or self._busy or not self._missing:
            return
        self._busy = True
        try:
            used = {os.fsdecode(part) for part in _parts(arguments)}
            self._missing = {name for name in self._missing
                             if not (name in used or (event == "os.system" and name in "".join(used)))}
        finally:
            self._busy = False


def _parts(value):
    if isinstance(value, (str, bytes, os.PathLike)):
        yield value
    elif isinstance(value, (tuple, list)):
        for part in value:
            yield from _parts(part)


def _ran_out_of_memory(error):
    """Whether the lack of memory is what an exception came from."""
    while error:
        if isinstance(error, MemoryError):
            return True
        error = error.__cause__ or error.__context__
    return False


def _status(code):
    """The exit status for what a script gave to sys.exit()."""
    if code is None:
        return 0
    if isinstance(code, int):
        return code & 0xFF
    print(code, file=sys.stderr)
    return 1


def _finish():
    """Does what the interpreter does when a program ends."""
    threading = sys.modules.get("threading")
    if threading:
        threading._shutdown()
    atexit._run_exitfuncs()
    for stream in (sys.stdout, sys.stderr):
        with contextlib.suppress(OSError, ValueError, AttributeError):
            stream.flush()


def _perform(script, arguments):
    """Runs a script in this process and says how it ended."""
    watch = Watch(arguments[-2:])
    try:
        try:
            script.run(arguments)
            status = 0
        except SystemExit as ended:
            if _ran_out_of_memory(ended.__context__):
                return "memory 0 0"
            status = _status(ended.code)
        _finish()
        return f"exit {status} {int(watch.saw_all)}"
    except MemoryError:
        return "memory 0 0"
    except BaseException as error:
        steps = error.__traceback__
        for _ in range(2):    # those of this file tell nothing
            steps = steps and steps.tb_next
        traceback.print_exception(type(error), error, steps)
        _finish()
        return "raised 0 0"


def _compare(script, arguments):
    """Runs a script in a process of its own and says how it ended."""
    reader, writer = os.pipe()
    server = os.getpid()
    child = os.fork()
    if child == 0:
        if _prctl:
            _prctl(1, int(signal.SIGKILL), 0, 0, 0)    # PR_SET_PDEATHSIG: nothing outlives the server
            if os.getppid() != server:
                os._exit(1)
        answer = _perform(script, arguments)
        os.write(writer, answer.encode())
        os._exit(0)
    _, status = os.waitpid(child, 0)
    os.close(writer)
    os.set_blocking(reader, False)    # whatever the script left running may hold the other end
    with open(reader, "rb") as pipe:
        answer = pipe.read()
    if os.WIFSIGNALED(status):
        return f"signal {os.WTERMSIG(status)} 0".encode()
    return answer or f"exit {os.WEXITSTATUS(status)} 0".encode()


def serve(channel):
    """Answers requests until nobody can send one any more."""
    scripts = {}
    channel.send(b"ready")
    while request := channel.recv(REQUEST_SIZE):
        path, *arguments = [os.fsdecode(part) for part in request.split(b"\0")]
        if path not in scripts:
            scripts[path] = Script(path)
            gc.collect()
            gc.freeze()           # a fork then copies few of the pages
        channel.send(b"begins")
        channel.send(_compare(scripts[path], arguments))


if __name__ == "__main__":
    serve(socket.socket(fileno=int(sys.argv[1])))
    os._exit(0)
