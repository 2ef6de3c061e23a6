"""Interactive shells that complete a line: all matches go into it, and the line into a file."""

import os
import pathlib
import pty
import select
import shlex
import subprocess
import time

BUILD = pathlib.Path(os.environ["SONAPROBE_BUILD_DIR"])
SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
PATIENCE = 20

BASH = """\
source /usr/share/bash-completion/bash_completion
source {source}/completion/bash/sonaprobe
source {source}/completion/bash/sonaprobe-sim
eval "$({build}/sonascope completion bash)"
cd {folder}
bind 'set enable-bracketed-paste off' '"\\t": insert-completions'
bind -x '"\\C-o": printf "%s\\n" "$READLINE_LINE" >line.new; mv line.new line; READLINE_LINE='
"""

ZSH = """\
mkdir -p {folder}/functions; {build}/sonascope completion zsh >{folder}/functions/_sonascope
fpath=({source}/completion/zsh {folder}/functions $fpath)
autoload -Uz compinit && compinit -u -D
cd {folder}
zle -C all-matches complete-word _generic
zstyle ':completion:all-matches:*' insert yes
zstyle ':completion:all-matches::::' completer _all_matches _complete
save() {{ print -r -- $BUFFER >line.new; mv line.new line; BUFFER= }}
zle -N save
bindkey -e '^I' all-matches '^O' save
unset zle_bracketed_paste
"""


FISH = """\
cd {folder}
{build}/sonascope completion fish | source
complete -C {text}
"""


class Shell:
    """A shell at a terminal of its own."""

    def __init__(self, command, settings, folder):
        self.line = folder / "line"
        self.terminal, end = pty.openpty()
        environment = {"PATH": os.environ["PATH"], "TERM": "dumb", "HOME": str(folder),
                       "ZDOTDIR": str(folder), "LC_ALL": "C.UTF-8", "COLUMNS": "4000"}
        rc = folder / ".zshrc" if command[0] == "zsh" else folder / "bashrc"
        rc.write_text(settings.format(source=SOURCE, build=BUILD, folder=folder))
        self.process = subprocess.Popen(command, stdin=end, stdout=end, stderr=end, cwd=folder,
                                        env=environment, start_new_session=True)
        os.close(end)

    def complete(self, text):
        """The words that stand in the place of the text's last one after the tabulator key."""
        self.line.unlink(missing_ok=True)
        os.write(self.terminal, text.encode() + b"\t\x0f")
        seen = b""
        deadline = time.monotonic() + PATIENCE
        while not self.line.exists():
            assert time.monotonic() < deadline, seen.decode(errors="replace")
            if select.select([self.terminal], [], [], 0.02)[0]:
                seen += os.read(self.terminal, 65536)
        line = self.line.read_text()
        kept = text.rpartition(" ")[0]
        assert line.startswith(kept), line
        return line.removeprefix(kept).split()

    def close(self):
        self.process.kill()
        self.process.wait()
        os.close(self.terminal)


def bash(folder):
    return Shell(["bash", "--noprofile", "--rcfile", str(folder / "bashrc"), "-i"], BASH, folder)


def zsh(folder):
    return Shell(["zsh", "-d", "-i"], ZSH, folder)


class Fish:
    """fish completes a line without a terminal."""

    def __init__(self, folder):
        self.folder = folder

    def complete(self, text):
        script = FISH.format(build=BUILD, folder=self.folder, text=shlex.quote(text))
        environment = {"PATH": os.environ["PATH"], "HOME": str(self.folder), "LC_ALL": "C.UTF-8"}
        result = subprocess.run(["fish", "--no-config", "-c", script], check=True, text=True,
                                capture_output=True, env=environment, timeout=PATIENCE)
        assert result.stderr == ""
        return [line.split("\t")[0] for line in result.stdout.splitlines()]

    def close(self):
        pass


def fish(folder):
    return Fish(folder)
