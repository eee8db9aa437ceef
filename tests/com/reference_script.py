"""The VBScript examples of the reference's pages as one script, and what it should print."""

import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path[:0] = [str(ROOT / "scripts"), str(ROOT / "tests" / "support")]

from page_examples import examples, expectations, plain  # noqa: E402
from wine_session import windows_path  # noqa: E402

BEGIN = "== "
FAILED = "!! "

# What the examples take for granted: a program's own objects.
SURROUNDINGS = """
Class Form
    Public Left
    Public Top
    Public Width
    Public Height
    Public Tag
End Class

Class Box
    Private held
    Public Default Property Get Text()
        Text = held
    End Property
    Public Property Let Text(value)
        held = value
    End Property
End Class

Class Documenti
    Public Proprieta
    Public Errore
    Public Function Read(connessione)
        Proprieta = "<NUMERO>12</NUMERO>"
        Read = True
    End Function
    Public Function Update(connessione)
        Update = True
    End Function
    Public Function Delete(connessione)
        Delete = True
    End Function
    Public Function PgUpDown(tasto, connessione)
        PgUpDown = True
    End Function
    Public Function XCP(campo, parametri, connessione)
        XCP = True
    End Function
End Class

Dim frmPadre, frmFiglio, txtCitta, txtCittaPrecedente, Documento
Set frmPadre = New Form
frmPadre.Left = 0
frmPadre.Top = 0
frmPadre.Width = 9000
frmPadre.Height = 6000
Set frmFiglio = New Form
frmFiglio.Width = 9000
frmFiglio.Height = 6000
Set txtCitta = New Box
Set txtCittaPrecedente = New Box
txtCittaPrecedente.Text = "Bari"
Set Documento = New Documenti
Set Documento.Errore = CreateObject("KapUtil.CErrore")
"""
# What the script host reads and prints texts in.
HOST_ENCODING = "cp1252"


def script_of(shown):
    """Each example is a procedure of its own; one that fails says so, and the next one follows."""
    procedures, calls = [], []
    for number, (name, setup, script) in enumerate(shown):
        body = "".join("    " + line + "\n" for line in (setup + script).splitlines())
        procedures.append(f"Sub Example{number}()\n{body}End Sub\n")
        calls.append(f'WScript.Echo "{BEGIN}{name}"\nExample{number}\n'
                     f'If Err.Number <> 0 Then WScript.Echo "{FAILED}" & Err.Number & " " & Err.Description\nErr.Clear\n')
    return SURROUNDINGS + "\n".join(procedures) + "\nOn Error Resume Next\n" + "".join(calls)


def says(line, expected):
    """Whether a printed line says what the example does. This script host prints truth values as numbers."""
    expected = expected.encode(HOST_ENCODING).decode("utf-8", "replace")
    as_numbers = [{"True": "-1", "False": "0"}.get(word, word) for word in expected.split(" ")]
    return line in (expected, " ".join(as_numbers))


def faults(shown, printed):
    """A sentence for every example that fails, or that does not print what stands behind it."""
    parts = {}
    for part in ("\n" + printed).split("\n" + BEGIN)[1:]:
        name, _, text = part.partition("\n")
        parts[name] = text
    for name, _, script in shown:
        text = parts.get(name)
        if text is None or FAILED in text:
            yield f"{name} fails: {text}"
            continue
        lines = iter([plain(line) for line in text.splitlines()])
        for expected in expectations(script, "WScript.Echo", "   ' "):
            if not any(says(line, expected) for line in lines):  # goes on behind it: they come in this order
                yield f"{name} does not print {expected} but\n{text}"
                break


def run(session, command_line, folder):
    """Writes the pages with the command line, runs their examples in the script host, and gives back the faults."""
    code, output = session.run(command_line, "classes", "--html", windows_path(folder / "pages"))
    if code != 0:
        return [output]
    shown = list(examples(folder / "pages" / "en", "vbscript"))
    (folder / "reference.vbs").write_text(script_of(shown), HOST_ENCODING)
    _, printed = session.run("cscript", "//nologo", "reference.vbs", folder=folder, timeout=300)
    few = [] if len(shown) > 100 else [f"there are {len(shown)} examples only"]
    return few + list(faults(shown, printed))
