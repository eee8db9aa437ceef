"""What scripts/check_interface.py says when something of the last release is gone, is changed or has been added."""

import pathlib
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))

import check_interface  # noqa: E402

RELEASE = ["kap::CErrore::Clear()", "kap::CProprieta::Leggi(kap::String const&)"]


class CheckInterface(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        kept, check_interface.FOLDER = check_interface.FOLDER, pathlib.Path(folder.name)
        self.addCleanup(setattr, check_interface, "FOLDER", kept)
        check_interface.write(check_interface.FOLDER / "symbols.txt", RELEASE)

    def faults(self, found, mode=""):
        return check_interface.check("symbols", found, mode)

    def test_the_release_as_it_was_is_no_fault(self):
        self.assertEqual(self.faults(RELEASE), [])

    def test_what_is_gone_is_a_fault_that_no_update_takes_away(self):
        gone = ["symbols: gone or changed since the last release: kap::CErrore::Clear()"]
        self.assertEqual(self.faults(RELEASE[1:]), gone)
        self.assertEqual(self.faults(RELEASE[1:], "--update"), gone)
        self.assertEqual(self.faults(RELEASE[1:]), gone)

    def test_another_signature_is_gone_and_added(self):
        changed = [RELEASE[0], "kap::CProprieta::Leggi(kap::Variant const&)"]
        self.assertEqual(len(self.faults(changed)), 2)
        self.assertEqual(self.faults(changed, "--update"), [f"symbols: gone or changed since the last release: {RELEASE[1]}"])

    def test_an_addition_is_a_fault_until_it_is_written_down(self):
        more = [*RELEASE, "kap::CProprieta::Tutti()"]
        self.assertEqual(self.faults(more), ["symbols: added, and not in symbols.added.txt (see --update): kap::CProprieta::Tutti()"])
        self.assertEqual(self.faults(more, "--update"), [])
        self.assertEqual(self.faults(more), [])

    def test_what_was_written_down_does_not_go_silently(self):
        self.faults([*RELEASE, "kap::CProprieta::Tutti()"], "--update")
        self.assertEqual(self.faults(RELEASE), ["symbols: in symbols.added.txt, but no more there: kap::CProprieta::Tutti()"])

    def test_a_release_takes_the_additions_in(self):
        more = [*RELEASE, "kap::CProprieta::Tutti()"]
        self.assertEqual(self.faults(more, "--release"), [])
        self.assertEqual(len(self.faults(RELEASE)), 1)


class Interface(unittest.TestCase):
    """What is compared: a list without these would hold nothing."""

    def test_the_catalogue_has_every_class_and_every_constant(self):
        lines = [line.split("  ")[0] for kind in ("catalogue.txt", "catalogue.added.txt")
                 for line in check_interface.read(ROOT / "tests/interface" / kind)]
        for name in ("KapUtil.CProprieta.Leggi", "ADODB.Recordset.MoveNext", "Field.Value", "RecordsetEvents.FetchComplete",
                     "CostantiNumeriche.kaOK", "CursorLocationEnum.adUseClient"):
            self.assertIn(name, lines)


if __name__ == "__main__":
    unittest.main()
