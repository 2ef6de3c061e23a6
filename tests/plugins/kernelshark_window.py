"""KernelShark's window on a screen of its own, and what is to be seen in it.

As a program, it renews docs/images/kernelshark.png: kernelshark_window.py PLUGIN FILE PICTURE
"""

import os
import re
import subprocess
import sys
import tempfile

# A warning to root comes first; Return closes it. Then the window opens, and is made larger.
SCRIPT = r"""
kernelshark "$@" & shark=$!
for attempt in $(seq 120); do
    sleep 0.25
    window=$(xdotool search --name '^Kernel Shark' 2>/dev/null | tail -n 1)
    [ -n "$window" ] && break
    xdotool search --name '^kernelshark$' >/dev/null 2>&1 && xdotool mousemove 700 400 key Return
done
if [ -n "$window" ]; then
    sleep 2
    xdotool windowsize --sync "$window" 1300 800
    sleep 2
    xdotool getwindowname "$window"
    import -window "$window" "$PICTURE"
fi
kill $shark
wait $shark
"""


def take_picture(picture, *arguments):
    """Starts KernelShark with the arguments and puts its window's picture into a file: its title,
    empty where no window came up."""
    with tempfile.TemporaryDirectory() as home:
        settings = os.environ | {"HOME": home, "XDG_RUNTIME_DIR": home, "PICTURE": str(picture),
                                 "LIBGL_ALWAYS_SOFTWARE": "1", "QT_QPA_PLATFORM": "xcb"}
        done = subprocess.run(["xvfb-run", "-a", "-s", "-screen 0 1400x900x24", "bash", "-c",
                               SCRIPT, "bash", *map(str, arguments)], check=False, text=True,
                              capture_output=True, env=settings, timeout=60)
    titles = re.findall(r"^Kernel Shark.*$", done.stdout, re.MULTILINE)
    return titles[-1] if titles else ""


def colours(picture):
    """The vivid colours of a picture, each with its pixels, but for specks and the green button."""
    histogram = subprocess.run(["convert", picture, "-depth", "8", "-format", "%c",
                                "histogram:info:-"], check=True, text=True,
                               capture_output=True).stdout
    found = {}
    for count, *channels in re.findall(r"(\d+): \((\d+),(\d+),(\d+)", histogram):
        channels = tuple(map(int, channels))
        is_vivid = max(channels) - min(channels) > 100 and channels[1] < max(channels)
        if is_vivid and int(count) >= 60:
            found[channels] = int(count)
    return found


if __name__ == "__main__":
    plugin, file, target = sys.argv[1:]
    print(take_picture(target, "-p", plugin, file, "--cpu", "2,4", "--pid", "7250,158"))
    subprocess.run(["convert", target, "-colors", "64", f"PNG8:{target}"], check=True)  # smaller
