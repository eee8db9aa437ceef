#include "cli/demo/sample_schema.hpp"

namespace kap::cli {

const char* sampleSchema() {
    return R"sql(
-- Currencies and products
CREATE TABLE vtx_TabVal (
    Codice varchar(3) NOT NULL PRIMARY KEY,
    Descrizione varchar(40) NOT NULL,
    Dec_Imp smallint NULL,           -- decimals of amounts
    Cambio decimal(12, 6) NOT NULL,  -- for one euro
    AggID timestamp
)

CREATE TABLE mag_Articoli (
    Codice varchar(15) NOT NULL PRIMARY KEY,
    Descrizione varchar(60) NOT NULL,
    UM char(2) NOT NULL,
    Prezzo money NOT NULL,
    AliquotaIva decimal(4, 2) NOT NULL,
    AggID timestamp
)

-- Customers
CREATE TABLE Clienti (
    Codice int NOT NULL PRIMARY KEY,
    RagioneSociale varchar(60) NOT NULL,
    Indirizzo varchar(60) NULL,
    CAP char(5) NULL,
    Localita varchar(40) NULL,
    Provincia char(2) NULL,
    PartitaIva char(11) NULL,
    Sconto decimal(5, 2) NULL,
    Fido money NULL,
    AggID timestamp
)

-- Document types and their counters, one row a counter and year
CREATE TABLE vtx_TabDoc (
    Codice varchar(3) NOT NULL PRIMARY KEY,
    Descrizione varchar(40) NOT NULL,
    TipoProg varchar(5) NOT NULL,
    AggID timestamp
)

CREATE TABLE vtx_TabPro (
    Codice varchar(5) NOT NULL,
    Anno smallint NOT NULL,
    Descrizione varchar(40) NOT NULL,
    n_Def int NOT NULL,         -- the last definitive number given out
    n_Prov int NOT NULL,        -- the last provisional one
    GestProvv smallint NOT NULL,
    AggID timestamp,
    PRIMARY KEY (Codice, Anno)
)

CREATE TABLE vtx_TabProPrenotati (
    Codice varchar(5) NOT NULL,
    Anno smallint NOT NULL,
    Numero int NOT NULL,
    Stato varchar(1) NULL,
    AggID timestamp,
    PRIMARY KEY (Codice, Anno, Numero)
)

-- Documents
CREATE TABLE mag_TDocumenti (
    Anno smallint NOT NULL,
    Tipo varchar(3) NOT NULL,
    Numero int NOT NULL,
    Data datetime NOT NULL,
    Cliente int NULL,
    Valuta varchar(3) NULL,
    Sconto decimal(5, 2) NULL,
    Imponibile money NULL,
    Iva money NULL,
    Totale money NULL,
    Note varchar(80) NULL,
    Annotazioni text NULL,
    MC_Registrazione varchar(10) NULL,  -- the accounting entry, once there is one
    AggID timestamp,
    PRIMARY KEY (Anno, Tipo, Numero)
)

CREATE TABLE mag_RDocumenti (
    Anno smallint NOT NULL,
    Tipo varchar(3) NOT NULL,
    Numero int NOT NULL,
    Riga int NOT NULL,
    Articolo varchar(15) NULL,
    Descrizione varchar(60) NULL,
    Qta decimal(12, 3) NULL,
    Prezzo money NULL,
    Sconto decimal(5, 2) NULL,
    Importo money NULL,
    AliquotaIva decimal(4, 2) NULL,
    AggID timestamp,
    PRIMARY KEY (Anno, Tipo, Numero, Riga)
)

CREATE TABLE mag_TFatture (
    Anno smallint NOT NULL,
    Tipo varchar(3) NOT NULL,
    Numero int NOT NULL,
    NumFat int NOT NULL,
    Data datetime NOT NULL,
    AggID timestamp,
    PRIMARY KEY (Anno, Tipo, Numero)
)

-- Accounting
CREATE TABLE con_TabCausali (
    Codice varchar(5) NOT NULL PRIMARY KEY,
    Descrizione varchar(40) NOT NULL,
    Registro varchar(5) NOT NULL,
    AggID timestamp
)

CREATE TABLE con_MovConT (
    Registrazione int NOT NULL PRIMARY KEY,
    Data datetime NOT NULL,
    Causale varchar(5) NOT NULL,
    Protocollo int NOT NULL,
    Importo money NOT NULL,
    AggID timestamp
)

CREATE TABLE con_MovConD (
    Registrazione int NOT NULL PRIMARY KEY,
    Anno smallint NOT NULL,
    Registro varchar(5) NOT NULL,
    Protocollo int NOT NULL,
    AggID timestamp
)

-- Configuration: the defaults, and what groups of users changed
CREATE TABLE KAP_CFG (
    Gruppo varchar(30) NOT NULL,
    Applicazione varchar(30) NOT NULL,
    Procedura varchar(30) NOT NULL,
    Modulo varchar(30) NOT NULL,
    Campo varchar(30) NOT NULL,
    Valore varchar(2000) NOT NULL,
    Flag varchar(10) NOT NULL,
    PRIMARY KEY (Gruppo, Applicazione, Procedura, Modulo, Campo)
)
)sql";
}

}  // namespace kap::cli
