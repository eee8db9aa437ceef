"""What every member of a recordset answers in each of its states: one table for all of them.

A value stands as it is, `-` for a member that gives none, and `!` with a number for an error: the last digits of the
data-access code (`!3021`), or all of the provider's.
"""

import tempfile
import unittest
from pathlib import Path

import kaputil
from support import ItalianTest, table

FIRST_OF_ITS_OWN = -2146828288
STATIC, OPTIMISTIC, BATCH, CLIENT = 3, 3, 4, 3
SHORT = {-2147217887: "!multi", -2147217885: "!gone", -2147217906: "!mark", -2147217884: "!back", -2147217873: "!key"}


def opened(query="SELECT * FROM Prova ORDER BY A", lock=OPTIMISTIC):
    recordset = kaputil.Dispatch("ADODB.Recordset")
    recordset.CursorLocation = CLIENT
    recordset.Open(query, table(), STATIC, lock)
    return recordset


def closed():
    return kaputil.Dispatch("ADODB.Recordset")


def empty():
    return opened("SELECT * FROM Prova WHERE A > 9")


def before():
    recordset = opened()
    recordset.MovePrevious()
    return recordset


def behind():
    recordset = opened()
    recordset.MoveLast()
    recordset.MoveNext()
    return recordset


def deleted():
    recordset = opened()
    recordset.Delete()
    return recordset


def adding():
    recordset = opened()
    recordset.AddNew()
    return recordset


def editing():
    recordset = opened()
    recordset.Fields("B").Value = "zz"
    return recordset


def waiting():
    recordset = opened(lock=BATCH)
    recordset.Update("B", "zz")
    return recordset


def once():
    return table().Execute("SELECT * FROM Prova ORDER BY A")


STATES = {"closed": closed, "empty": empty, "BOF": before, "EOF": behind, "row": opened, "deleted": deleted,
          "adding": adding, "editing": editing, "waiting": waiting, "once": once}


def getting(name):
    return lambda recordset: getattr(recordset, name)


def putting(name, value):
    return lambda recordset: setattr(recordset, name, value)


def calling(name, *arguments):
    return lambda recordset: getattr(recordset, name)(*arguments)


def of_field(name):
    return lambda recordset: getattr(recordset.Fields(1), name)


MEMBERS = {
    **{name: getting(name) for name in (
        "AbsolutePage", "AbsolutePosition", "BOF", "Bookmark", "CacheSize", "CursorLocation", "CursorType", "EditMode",
        "EOF", "LockType", "MarshalOptions", "MaxRecords", "PageCount", "PageSize", "RecordCount", "Source", "State",
        "Status", "StayInSync")},
    "AbsolutePage =": putting("AbsolutePage", 1),
    "AbsolutePosition =": putting("AbsolutePosition", 1),
    "Bookmark =": putting("Bookmark", 1.0),
    "CacheSize =": putting("CacheSize", 5),
    "CursorLocation =": putting("CursorLocation", 2),
    "CursorType =": putting("CursorType", 3),
    "Filter =": putting("Filter", "A > 1"),
    "LockType =": putting("LockType", 3),
    "MaxRecords =": putting("MaxRecords", 2),
    "PageSize =": putting("PageSize", 3),
    "Sort =": putting("Sort", "A DESC"),
    "Source =": putting("Source", "x"),
    "AddNew": calling("AddNew"),
    "Cancel": calling("Cancel"),
    "CancelBatch": calling("CancelBatch"),
    "CancelUpdate": calling("CancelUpdate"),
    "Clone": lambda recordset: bool(recordset.Clone()),
    "Close": calling("Close"),
    "Delete": calling("Delete"),
    "Find": calling("Find", "A = 2"),
    "GetRows": lambda recordset: len(recordset.GetRows()),
    "Move 0": calling("Move", 0),
    "Move 1": calling("Move", 1),
    "Move -1": calling("Move", -1),
    "MoveFirst": calling("MoveFirst"),
    "MoveLast": calling("MoveLast"),
    "MoveNext": calling("MoveNext"),
    "MovePrevious": calling("MovePrevious"),
    "NextRecordset": lambda recordset: bool(recordset.NextRecordset()),
    "Open": calling("Open"),
    "Requery": calling("Requery"),
    "Resync": calling("Resync"),
    "Save": lambda recordset: saved(recordset),
    "Seek": calling("Seek", 1),
    "Supports": calling("Supports", 16778240),
    "Update": calling("Update"),
    "UpdateBatch": calling("UpdateBatch"),
    "Collect": calling("Collect", 1),
    "Fields.Count": lambda recordset: recordset.Fields.Count,
    "Fields.Append": lambda recordset: recordset.Fields.Append("N", 3),
    "Fields.Delete": lambda recordset: recordset.Fields.Delete("A"),
    "Field.Value": of_field("Value"),
    "Field.Value =": lambda recordset: setattr(recordset.Fields(1), "Value", "w"),
    "Field.OriginalValue": of_field("OriginalValue"),
    "Field.UnderlyingValue": of_field("UnderlyingValue"),
    "Field.ActualSize": of_field("ActualSize"),
    "Field.DefinedSize": of_field("DefinedSize"),
    "Field.Attributes": of_field("Attributes"),
    "Field.Type": of_field("Type"),
    "Field.Status": of_field("Status"),
    "Field.Name": of_field("Name"),
    "Field.NumericScale": of_field("NumericScale"),
    "Field.GetChunk": lambda recordset: recordset.Fields(1).GetChunk(1),
    "Field.AppendChunk": lambda recordset: recordset.Fields(1).AppendChunk("q"),
}


def saved(recordset):
    with tempfile.TemporaryDirectory() as folder:
        recordset.Save(str(Path(folder) / "rows.xml"), 1)


def answer(member, state):
    try:
        value = member(STATES[state]())
    except kaputil.AutomationError as error:
        own = error.number - FIRST_OF_ITS_OWN
        return SHORT.get(error.number, f"!{own}" if 0 < own < 9999 else f"!{error.number}")
    return "-" if value is None else str(value).split()[0] if value != "" else "''"


EXPECTED = """\
                      closed   empty    BOF      EOF      row      deleted  adding   editing  waiting  once
AbsolutePage          !3704    -1       -2       -3       1        -1       1        1        1        -1
AbsolutePosition      !3704    -1       -2       -3       1        -1       4        1        1        -1
BOF                   !3704    True     True     False    False    False    False    False    False    False
Bookmark              !3704    !3021    !3021    !3021    1.0      !gone    4.0      1.0      1.0      !3251
CacheSize             1        1        1        1        1        1        1        1        1        1
CursorLocation        2        3        3        3        3        3        3        3        3        2
CursorType            0        3        3        3        3        3        3        3        3        0
EditMode              !3704    !3021    !3021    !3021    0        4        2        1        0        0
EOF                   !3704    True     False    True     False    False    False    False    False    False
LockType              1        3        3        3        3        3        3        3        4        1
MarshalOptions        0        0        0        0        0        0        0        0        0        0
MaxRecords            0        0        0        0        0        0        0        0        0        0
PageCount             !3704    0        1        1        1        1        1        1        1        -1
PageSize              10       10       10       10       10       10       10       10       10       10
RecordCount           !3704    0        3        3        3        2        4        3        3        -1
Source                ''       SELECT   SELECT   SELECT   SELECT   SELECT   SELECT   SELECT   SELECT   SELECT
State                 0        1        1        1        1        1        1        1        1        1
Status                !3704    !3021    !3021    !3021    8        262144   1        2        2        8
StayInSync            True     True     True     True     True     True     True     True     True     True
AbsolutePage =        !3704    !3001    -        -        -        -        !key     -        -        !3251
AbsolutePosition =    !3704    !3001    -        -        -        -        !key     -        -        !3251
Bookmark =            !3704    !mark    -        -        -        !mark    !key     -        -        !3251
CacheSize =           -        -        -        -        -        -        -        -        -        -
CursorLocation =      -        !3705    !3705    !3705    !3705    !3705    !3705    !3705    !3705    !3705
CursorType =          -        !3705    !3705    !3705    !3705    !3705    !3705    !3705    !3705    !3705
Filter =              -        -        -        -        -        -        !key     -        -        -
LockType =            -        !3705    !3705    !3705    !3705    !3705    !3705    !3705    !3705    !3705
MaxRecords =          -        !3705    !3705    !3705    !3705    !3705    !3705    !3705    !3705    !3705
PageSize =            -        -        -        -        -        -        -        -        -        -
Sort =                !3251    -        -        -        -        -        !key     -        -        !3251
Source =              -        !3705    !3705    !3705    !3705    !3705    !3705    !3705    !3705    !3705
AddNew                !3704    -        -        -        -        -        !key     -        -        !3251
Cancel                -        -        -        -        -        -        -        -        -        -
CancelBatch           !3704    !3251    !3251    !3251    !3251    !3251    !3251    !3251    -        !3251
CancelUpdate          !3704    -        -        -        -        -        -        -        -        -
Clone                 !3704    True     True     True     True     True     !key     True     True     !3251
Close                 !3704    -        -        -        -        -        !3219    !3219    -        -
Delete                !3704    !3021    !3021    !3021    -        !gone    !3219    -        -        !3251
Find                  !3704    !3021    !3021    !3021    -        -        !key     -        -        -
GetRows               !3704    !3021    !3021    !3021    2        !gone    !key     2        2        2
Move 0                !3704    !3021    -        -        -        -        !key     -        -        -
Move 1                !3704    !3021    -        !3021    -        -        !key     -        -        -
Move -1               !3704    !3021    !3021    -        -        -        !key     -        -        !back
MoveFirst             !3704    !3021    -        -        -        -        !key     -        -        -
MoveLast              !3704    !3021    -        -        -        -        !key     -        -        -
MoveNext              !3704    !3021    -        !3021    -        -        !key     -        -        -
MovePrevious          !3704    !3021    !3021    -        -        -        !key     -        -        !back
NextRecordset         !3704    False    False    False    False    False    !3219    !3219    False    False
Open                  !3709    !3705    !3705    !3705    !3705    !3705    !3705    !3705    !3705    !3705
Requery               !3704    -        -        -        -        -        !3219    !3219    -        -
Resync                !3704    -        -        -        -        -        !3219    -        -        -
Save                  !3704    -        -        -        -        -        !key     -        -        -
Seek                  !3704    !3251    !3251    !3251    !3251    !3251    !3251    !3251    !3251    !3251
Supports              !3704    True     True     True     True     True     True     True     True     False
Update                !3704    -        -        -        -        -        !key     -        -        -
UpdateBatch           !3704    !3251    !3251    !3251    !3251    !3251    !3251    !3251    -        !3251
Collect               !3704    !3021    !3021    !3021    uno      !gone    -        zz       zz       uno
Fields.Count          0        2        2        2        2        2        2        2        2        2
Fields.Append         -        !3219    !3219    !3219    !3219    !3219    !3219    !3219    !3219    !3219
Fields.Delete         !3265    !3219    !3219    !3219    !3219    !3219    !3219    !3219    !3219    !3219
Field.Value           !3265    !3021    !3021    !3021    uno      !gone    -        zz       zz       uno
Field.Value =         !3265    !3021    !3021    !3021    -        !gone    -        -        -        !3251
Field.OriginalValue   !3265    !3021    !3021    !3021    uno      uno      -        uno      uno      uno
Field.UnderlyingValue !3265    !3021    !3021    !3021    uno      uno      -        uno      uno      uno
Field.ActualSize      !3265    !3021    !3021    !3021    3        !gone    0        2        2        3
Field.DefinedSize     !3265    20       20       20       20       20       20       20       20       20
Field.Attributes      !3265    104      104      104      104      104      104      104      104      96
Field.Type            !3265    200      200      200      200      200      200      200      200      200
Field.Status          !3265    0        0        0        0        0        0        0        0        0
Field.Name            !3265    B        B        B        B        B        B        B        B        B
Field.NumericScale    !3265    255      255      255      255      255      255      255      255      255
Field.GetChunk        !3265    !3219    !3219    !3219    !3219    !3219    !3219    !3219    !3219    !3219
Field.AppendChunk     !3265    !3219    !3219    !3219    !3219    !3219    !3219    !3219    !3219    !3219
"""


class States(ItalianTest):
    maxDiff = None

    def test_of_a_recordset_decide_what_its_members_answer(self):
        lines = [f"{'':22}" + " ".join(f"{state:8}" for state in STATES)]
        for name, member in MEMBERS.items():
            lines.append(f"{name:22}" + " ".join(f"{answer(member, state):8}" for state in STATES))
        self.assertEqual("\n".join(line.rstrip() for line in lines) + "\n", EXPECTED)


if __name__ == "__main__":
    unittest.main()
