// Recordsets in files and streams.
#include <fstream>

#include <kaputil/ado/stream.hpp>

#include "ado/recordset_fixture.hpp"
#include "support/temporary_folder.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::raisedBy;
using test::shown;

class SavingTest : public RecordsetTest {
protected:
    [[nodiscard]] String file(const char* name) const { return String(folder_.file(name)); }

    static Ref<Recordset> opened(const Variant& source, LockTypeEnum lock) {
        auto rows = make<Recordset>();
        rows->Open(source, Variant::missing(), CursorTypeEnum::adOpenStatic, lock);
        return rows;
    }

    // Through a stream and back.
    static Ref<Recordset> again(const Ref<Recordset>& rows,
                                LockTypeEnum lock = LockTypeEnum::adLockBatchOptimistic) {
        const auto stream = make<Stream>();
        stream->Open();
        rows->Save(Variant(stream), PersistFormatEnum::adPersistXML);
        return opened(Variant(stream), lock);
    }

    [[nodiscard]] Ref<Recordset> batch() const {
        auto rows = make<Recordset>();
        rows->setCursorLocation(CursorLocationEnum::adUseClient);
        rows->Open(u"SELECT Codice, Nome, Fido FROM Clienti ORDER BY Codice", Variant(connection_),
                   CursorTypeEnum::adOpenStatic, LockTypeEnum::adLockBatchOptimistic);
        return rows;
    }

    test::TemporaryFolder folder_;
};

TEST_F(SavingTest, IsReadBackAsItWas) {
    const auto rows = all();
    const auto copy = again(rows);
    ASSERT_EQ(copy->RecordCount(), 3);
    EXPECT_FALSE(copy->ActiveConnection().as<Ref<Object>>());
    rows->MoveFirst();
    for (; !rows->Eof(); rows->MoveNext(), copy->MoveNext()) {
        for (std::int32_t i = 0; i < rows->Fields()->Count(); ++i) {
            EXPECT_EQ(shown(fieldOf(copy, i)), shown(fieldOf(rows, i))) << i;
        }
    }
    for (std::int32_t i = 0; i < rows->Fields()->Count(); ++i) {
        const auto field = rows->Fields()->Item(i);
        const auto other = copy->Fields()->Item(i);
        EXPECT_EQ(other->Name(), field->Name());
        EXPECT_EQ(other->Type(), field->Type());
        EXPECT_EQ(other->DefinedSize(), field->DefinedSize());
        EXPECT_EQ(other->Precision(), field->Precision());
        EXPECT_EQ(other->NumericScale(), field->NumericScale());
    }
}

TEST_F(SavingTest, IsWrittenInTheFormThatOthersRead) {
    const auto rows = make<Recordset>();
    rows->Fields()->Append(u"N", DataTypeEnum::adInteger);
    rows->Fields()->Append(u"Ragione sociale", DataTypeEnum::adVarWChar, 20);
    rows->Open();
    rows->AddNew(Array::ofVariants({0, 1}), Array::ofVariants({1, u"O'Neil & <figli>"}));
    rows->AddNew(u"N", 2);
    const String name = file("righe.xml");
    rows->Save(name, PersistFormatEnum::adPersistXML);
    std::ifstream in(name.utf8());
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(text,
              "<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882'\n"
              "\txmlns:dt='uuid:C2F41010-65B3-11d1-A29F-00AA00C14882'\n"
              "\txmlns:rs='urn:schemas-microsoft-com:rowset'\n"
              "\txmlns:z='#RowsetSchema'>\n"
              "<s:Schema id='RowsetSchema'>\n"
              "\t<s:ElementType name='row' content='eltOnly' rs:updatable='true'>\n"
              "\t\t<s:AttributeType name='N' rs:number='1' rs:nullable='true' "
              "rs:writeunknown='true' rs:basecolumn='N'>\n"
              "\t\t\t<s:datatype dt:type='int' dt:maxLength='4' rs:precision='10' "
              "rs:fixedlength='true'/>\n"
              "\t\t</s:AttributeType>\n"
              "\t\t<s:AttributeType name='c1' rs:name='Ragione sociale' rs:number='2' "
              "rs:nullable='true' rs:writeunknown='true' rs:basecolumn='Ragione sociale'>\n"
              "\t\t\t<s:datatype dt:type='string' dt:maxLength='20'/>\n"
              "\t\t</s:AttributeType>\n"
              "\t\t<s:extends type='rs:rowbase'/>\n"
              "\t</s:ElementType>\n"
              "</s:Schema>\n"
              "<rs:data>\n"
              "\t<z:row N='1' c1='O&apos;Neil &amp; &lt;figli&gt;'/>\n"
              "\t<z:row N='2'/>\n"
              "</rs:data>\n"
              "</xml>\n");
    const auto copy = opened(name, LockTypeEnum::adLockReadOnly);
    EXPECT_EQ(shown(fieldOf(copy, u"Ragione sociale")), "String O'Neil & <figli>");
    EXPECT_EQ(raisedBy([&] { copy->Update(u"N", 5); }), errors::kFeatureNotAvailable);
}

TEST_F(SavingTest, WhatWaitsForABatchUpdateStillWaitsAndIsWritten) {
    const auto rows = batch();
    rows->Update(u"Nome", u"Neri");
    rows->MoveNext();
    rows->Delete();
    rows->AddNew(Array::ofVariants({u"Codice", u"Nome"}), Array::ofVariants({9, u"Nuovo"}));
    rows->MoveFirst();
    rows->MoveNext();
    rows->Update(u"Fido", Variant::null());
    const auto copy = again(rows);
    EXPECT_EQ(copy->RecordCount(), 3);
    EXPECT_EQ(shown(copy->Fields()->Item(u"Nome")->OriginalValue()), "String Rossi");
    EXPECT_EQ(shown(fieldOf(copy, u"Nome")), "String Neri");
    copy->setActiveConnection(Variant(connection_));
    copy->UpdateBatch();
    EXPECT_EQ(shown(test::valueOf(connection_, u"SELECT COUNT(*) FROM Clienti")), "Long 3");
    EXPECT_EQ(shown(test::valueOf(connection_, u"SELECT Nome FROM Clienti WHERE Codice = 1")),
              "String Neri");
    EXPECT_EQ(shown(test::valueOf(connection_, u"SELECT Fido FROM Clienti WHERE Codice = 3")),
              "Null");
    EXPECT_EQ(shown(test::valueOf(connection_, u"SELECT Nome FROM Clienti WHERE Codice = 9")),
              "String Nuovo");
}

TEST_F(SavingTest, SavesWhatTheFilterShowsAndGoesToTheFirstRecord) {
    const auto rows = all();
    rows->setFilter(u"Codice > 1");
    rows->MoveLast();
    EXPECT_EQ(again(rows)->RecordCount(), 2);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 2");
}

TEST_F(SavingTest, AFileIsNotOverwrittenUnlessItIsItsOwn) {
    const auto rows = all();
    const String name = file("clienti.xml");
    EXPECT_EQ(raisedBy([&] { rows->Save(Variant::missing(), PersistFormatEnum::adPersistXML); }),
              errors::kInvalidArgument);
    rows->Save(name, PersistFormatEnum::adPersistXML);
    rows->Save(Variant::missing(), PersistFormatEnum::adPersistXML);
    EXPECT_EQ(raisedBy([&] { all()->Save(name, PersistFormatEnum::adPersistXML); }), 58);
    EXPECT_EQ(opened(name, LockTypeEnum::adLockReadOnly)->RecordCount(), 3);
    const auto byProvider = make<Recordset>();
    byProvider->Open(name, u"Provider=MSPersist;", CursorTypeEnum::adOpenForwardOnly,
                     LockTypeEnum::adLockReadOnly, 256);
    EXPECT_EQ(byProvider->RecordCount(), 3);
}

TEST_F(SavingTest, TheBinaryFormIsRefusedByName) {
    EXPECT_EQ(raisedBy([&] { all()->Save(file("x.adtg")); }), errors::kFeatureNotAvailable);
    const String name = file("binaria.adtg");
    std::ofstream(name.utf8(), std::ios::binary) << std::string("\x01TG!\x01\x00", 6) << "resto";
    EXPECT_EQ(raisedBy([&] { (void)opened(name, LockTypeEnum::adLockReadOnly); }),
              errors::kFeatureNotAvailable);
}

TEST_F(SavingTest, AFileOfAnotherWriterIsRead) {
    const String name = file("altri.xml");
    std::ofstream(name.utf8())
        << "<?xml version=\"1.0\"?>\n<!-- fatto a mano -->\n"
           "<xml xmlns:a=\"uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882\" "
           "xmlns:b=\"uuid:C2F41010-65B3-11d1-A29F-00AA00C14882\" "
           "xmlns:c=\"urn:schemas-microsoft-com:rowset\" xmlns:d=\"#RowsetSchema\">"
           "<a:Schema id=\"RowsetSchema\"><a:ElementType name=\"row\">"
           "<a:AttributeType name=\"Prezzo\" c:number=\"1\" c:write=\"true\">"
           "<a:datatype b:type=\"number\" c:dbtype=\"currency\"/></a:AttributeType>"
           "<a:AttributeType name=\"Quando\" c:number=\"2\" b:type=\"dateTime\"/>"
           "<a:AttributeType name=\"Nota\" c:number=\"3\"><a:datatype b:type=\"string\" "
           "b:maxLength=\"10\"/></a:AttributeType></a:ElementType></a:Schema>"
           "<c:data><d:row Prezzo=\"1.2345\" Quando=\"2003-12-31T18:30:00.250\" "
           "Nota=\"a&#10;&#xE0;\"/></c:data></xml>";
    const auto rows = opened(name, LockTypeEnum::adLockOptimistic);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Currency 1,2345");
    EXPECT_EQ(shown(fieldOf(rows, 2)), "String a\nà");
    EXPECT_EQ(rows->Fields()->Item(1)->Type(), DataTypeEnum::adDBTimeStamp);
    rows->Update(u"Prezzo", 2);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Currency 2");
}

TEST_F(SavingTest, WhatIsNoSavedRecordsetIsRefused) {
    const std::string head =
        "<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882' "
        "xmlns:rs='urn:schemas-microsoft-com:rowset'>";
    for (const std::string& text :
         {std::string(""), std::string("Codice;Nome"), std::string("<xml>"),
          std::string("<xml></xm>"), std::string("<xml a='1' a='2'/>"), std::string("<xml a=1/>"),
          std::string("<xml a='&nome;'/>"), std::string("<xml a='<'/>"), head + "<rs:data/></xml>",
          std::string("\xFF\xFE\x00", 3), std::string("<xml a='\xE0'/>")}) {
        const String name = file("no.xml");
        std::ofstream(name.utf8(), std::ios::binary | std::ios::trunc) << text;
        const auto rows = make<Recordset>();
        EXPECT_EQ(raisedBy([&] { rows->Open(name); }), errors::kReadingFile) << text;
        EXPECT_EQ(rows->State(), ObjectStateEnum::adStateClosed);
    }
    const auto rows = make<Recordset>();
    EXPECT_EQ(raisedBy([&] {
                  rows->Open(file("manca.xml"), Variant::missing(), CursorTypeEnum::adOpenStatic,
                             LockTypeEnum::adLockReadOnly, 256);
              }),
              errors::kOpeningFile);
}

TEST_F(SavingTest, EveryTypeComesBackAsItWas) {
    test::prepare(
        connection_,
        u"CREATE TABLE Tipi (a tinyint, b smallint, c bigint, d real, e float, f decimal(18,4), "
        u"g date, h smalldatetime, i char(3), j nvarchar(max), k varbinary(4), l "
        u"uniqueidentifier, m bit, n datetime);"
        u"INSERT INTO Tipi VALUES (255, -32768, 9223372036854775807, 1.5, 1e-300, "
        u"12345678901234.7891, '2004-02-29', '2004-02-29 10:01', 'ab', "
        u"N'è\n\t\"', 0x00FF, '6F9619FF-8B86-D011-B42D-00C04FC964FF', 1, "
        u"'2004-02-29 10:01:02.003')");
    const auto rows = test::openLive(connection_, u"SELECT * FROM Tipi");
    const auto copy = again(rows);
    for (std::int32_t i = 0; i < rows->Fields()->Count(); ++i) {
        EXPECT_EQ(shown(fieldOf(copy, i)), shown(fieldOf(rows, i))) << i;
        EXPECT_EQ(copy->Fields()->Item(i)->Type(), rows->Fields()->Item(i)->Type()) << i;
    }
}

TEST_F(SavingTest, ACharacterThatXmlCannotHoldIsRefused) {
    const auto rows = make<Recordset>();
    rows->Fields()->Append(u"A", DataTypeEnum::adVarWChar, 5);
    rows->Open();
    rows->AddNew(u"A", u"\u0001");
    EXPECT_EQ(raisedBy([&] { rows->Save(file("c.xml"), PersistFormatEnum::adPersistXML); }),
              errors::kInvalidArgument);
}

}  // namespace
}  // namespace kap::ado
