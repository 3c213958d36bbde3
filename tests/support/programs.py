"""Helper programs that run as long as a test needs them."""

import contextlib
import subprocess

PATIENCE = 10


@contextlib.contextmanager
def program(*command, stderr=None):
    """Runs a program that ends with its standard input, and gives its first line and itself."""
    process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=stderr, text=True)
    try:
        yield process.stdout.readline().strip(), process
    finally:
        process.stdin.close()
        try:
            process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
        process.stdout.close()
        if process.stderr:
            process.stderr.close()
