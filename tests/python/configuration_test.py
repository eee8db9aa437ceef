"""The configuration tree from Python: names only, default members, the whole cycle."""

import gc
import unittest

import kaputil

CREATE = (
    "CREATE TABLE KAP_CFG (Gruppo varchar(30), Applicazione varchar(30), Procedura varchar(30), "
    "Modulo varchar(30), Campo varchar(30), Valore varchar(200), Flag varchar(10))"
)


def connection():
    opened = kaputil.Dispatch("ADODB.Connection")
    opened.Open("Provider=KapLocal;Data Source=:memory:")
    opened.Execute(CREATE)
    return opened


def declared(database):
    root = kaputil.Dispatch("KapUtil.CFG_Applicazioni")
    root.Gruppo = "UFFICIO"
    root.ActiveConnection = database
    module = root.Add("Vendite").Procedure.Add("Ordini").Moduli.Add("Stampa")
    module.Campi.Add("Copie").ValoreDefault = "1"
    return root


class Configuration(unittest.TestCase):
    def test_a_field_is_reached_through_default_members(self):
        root = declared(connection())
        field = root("Vendite")("Ordini")("Stampa")("Copie")
        self.assertEqual(field.Valore, "1")
        self.assertEqual(field.Path, "UFFICIO\\Vendite\\Ordini\\Stampa\\Copie")

    def test_what_is_saved_is_loaded_again(self):
        database = connection()
        field = declared(database)("Vendite")("Ordini")("Stampa")("Copie")
        field.Valore = 3
        field.Update()
        root = declared(database)
        root.CaricaCfgPersonalizzati()
        field = root("Vendite")("Ordini")("Stampa")("Copie")
        self.assertEqual((field.Valore, field.Gruppo, field.Personalizzato), ("3", "UFFICIO", True))

    def test_a_print_layout_added_at_run_time_comes_back(self):
        database = connection()
        fields = declared(database)("Vendite")("Ordini")("Stampa").Campi
        field = fields.Add("Conferma")
        field.Valore = "<ADD_RUNTIME></ADD_RUNTIME>"
        view = kaputil.Dispatch("KapUtil.CFG_Stampa")
        view.Init(field)
        view.Titolo = "Conferma d'ordine"
        field.Update()
        root = declared(database)
        root.CaricaCfgPersonalizzati()
        view.Init(root("Vendite")("Ordini")("Stampa")("Conferma"))
        self.assertEqual((view.Titolo, view.AddRunTime, view.Copie), ("Conferma d'ordine", True, "1"))

    def test_the_live_collection_is_enumerated(self):
        fields = declared(connection())("Vendite")("Ordini")("Stampa").Campi
        fields.Add("Stampante")
        self.assertEqual([field.Nome for field in fields.Collezione], ["Copie", "Stampante"])
        self.assertEqual(fields.Count, 2)

    def test_errors_are_told_to_the_letter(self):
        root = declared(connection())
        with self.assertRaises(kaputil.AutomationError) as caught:
            root("Vendite")("Ordini")("Stampa")("Manca")
        error = caught.exception
        self.assertEqual((error.number, error.source), (-2147221503, ""))
        self.assertEqual(error.description, "CFG   UFFICIO\\Vendite\\Ordini\\Stampa\\Manca  non  trovato")

    def test_the_deepest_node_keeps_the_tree(self):
        field = declared(connection())("Vendite")("Ordini")("Stampa")("Copie")
        gc.collect()
        node = field
        for _ in range(7):
            node = node.Parent
        self.assertEqual(node.Gruppo, "UFFICIO")

    def test_one_flag_is_looked_up_without_a_tree(self):
        database = connection()
        database.Execute("CREATE TABLE ABC_KAP_CFG (Applicazione varchar(9), Procedura varchar(9), "
                         "Campo varchar(9), Flag varchar(9))")
        database.Execute("INSERT INTO ABC_KAP_CFG VALUES ('A', 'Ordini', 'C', '1')")
        self.assertEqual(kaputil.KapCFG(database, "ABC", "Ordini").Leggi("Flag"), "1")
        self.assertEqual(kaputil.KapCFG(database, "ABC", "Bolle").Leggi(), "<FLAG>0</FLAG>")


if __name__ == "__main__":
    unittest.main()
