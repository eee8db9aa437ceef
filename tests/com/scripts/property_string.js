// Named values in one text.
function check(what, expected, actual) {
    if (expected !== actual) throw new Error(what + ": expected " + expected + ", got " + actual);
}

function failureOf(action) {
    try {
        action();
    } catch (e) {
        return (e.number < -2146828288 || e.number > -2146762753) ? e.number : e.number & 0xFFFF;
    }
    return 0;
}

var bag = new ActiveXObject("KapUtil.CProprieta");
bag.Scrivi("Codice", 12);
bag.SCRIVI("nome", "Ferramenta Rossi");
check("a value", "12", bag.Leggi("codice"));
check("the whole", "<CODICE>12</CODICE><NOME>Ferramenta Rossi</NOME>", bag.Leggi());
check("the number of values", 2, bag.Count());
check("a value that is not there", null, bag.Leggi("Cognome"));
