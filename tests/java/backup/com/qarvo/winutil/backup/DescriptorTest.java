package com.qarvo.winutil.backup;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.util.List;
import java.util.Set;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.ValueSource;

class DescriptorTest {
    @ParameterizedTest
    @CsvSource(delimiter = '~', value = {
        "O:BAG:SYD:(A;;FA;;;SY) ~ 7",
        "O:S-1-5-21-1-2-3-1000G:S-1-5-21-1-2-3-513D:PAI(A;OICI;0x1200a9;;;WD)(D;;FW;;;AN) ~ 7",
        "O:BA ~ 1",
        "G:SY ~ 2",
        "O:BAG:SY ~ 3",
        "D: ~ 4",
        "D:P ~ 4",
        "D:NO_ACCESS_CONTROL ~ 4",
        "O:BAD:(A;;FA;;;SY) ~ 5",
        "D:(XA;;FX;;;S-1-1-0;(@User.Title==\"PM (acting)\" && (Member_of {SID(BA)}))) ~ 4",
    })
    void hasThePartsThatTheTextHas(String text, int parts) throws IOException {
        assertEquals(parts, Descriptor.parse(text).parts());
    }

    @ParameterizedTest
    @CsvSource(delimiter = '=', value = {
        "O:BAG:SYD:P(A;;FA;;;SY)(D;;FW;;;WD) = O:BAG:SYD:P(A;;FA;;;SY)(D;;FW;;;WD)",
        "O:BAG:SY = O:BAG:SY",
        "D: = D:",
        "D:AI(A;ID;FA;;;SY) = D:ARAI(A;ID;FA;;;SY)",
        "D:PAI(A;;FA;;;SY) = D:PARAI(A;;FA;;;SY)",
        "D:ARAI(A;;FA;;;SY) = D:ARAI(A;;FA;;;SY)",
    })
    void isSetAsItStandsExceptThatAnInheritedListMustBeAskedFor(String text, String set) throws IOException {
        assertEquals(set, Descriptor.parse(text).text());
    }

    @ParameterizedTest
    @ValueSource(strings = {"", "x", "O:", "O:BAG:", "O:BASY", "O:S-1-5-21-G:SY D:", "G:SYO:BA", "D:X", "D:(A", "D:)(",
        "D:(A))", "D:(A)x", "D:(A)S:(AU)", "S:(ML;;NW;;;LW)", "O:BAS:(ML)", "D:(A)D:(A)", "D:(\")", "D:(A)\"x\"",
        "D:(A;;FA;;;SY)\u0000", "D:(A;;FA;;;SY\u0000)(D;;FA;;;WD)", "O:BA\n", "O:../x", "D:PPPPP"})
    void anythingElseThanWhatABackupWritesIsRefused(String text) {
        assertThrows(IOException.class, () -> Descriptor.parse(text));
    }

    @Test
    void saysEachPartInWhichAnotherOneDiffers() throws IOException {
        Descriptor wanted = Descriptor.parse("O:BAG:SYD:P(A;;FA;;;SY)");

        assertEquals(List.of(), wanted.differencesOf(Descriptor.parse("O:BAG:SYD:P(A;;FA;;;SY)")));
        assertEquals(List.of("its owner is SY instead of BA", "its group is BU instead of SY",
                "its access rights are (A;;FA;;;SY) instead of P(A;;FA;;;SY)"),
                wanted.differencesOf(Descriptor.parse("O:SYG:BUD:(A;;FA;;;SY)")));
        assertEquals(List.of("its group is none instead of SY", "its access rights are none instead of P(A;;FA;;;SY)"),
                wanted.differencesOf(Descriptor.parse("O:BA")));
    }

    @Test
    void howAListCameToBeIsNoDifferenceAndAPartThatIsNotWantedIsNone() throws IOException {
        Descriptor wanted = Descriptor.parse("D:AI(A;ID;FA;;;SY)");

        assertEquals(List.of(), wanted.differencesOf(Descriptor.parse("O:BAG:SYD:(A;ID;FA;;;SY)")));
    }

    @Test
    void noListAtAllIsNotTheEmptyOne() throws IOException {
        assertEquals(List.of("its access rights are NO_ACCESS_CONTROL instead of none"),
                Descriptor.parse("D:").differencesOf(Descriptor.parse("D:NO_ACCESS_CONTROL")));
    }

    @ParameterizedTest
    @ValueSource(strings = {"O:BAG:SYD:P(A;;FA;;;SY)", "O:SYD:(A;OICI;FA;;;BA)(A;ID;FR;;;SY)", "O:BAD:",
        "O:BAD:(D;;FA;;;WD)(A;;FA;;;SY)"})
    void grantsNothingToOthers(String text) throws IOException {
        assertTrue(Descriptor.parse(text).grantsOnly(Set.of("SY", "BA")));
    }

    @Test
    void belongsToItsOwnerAlone() throws IOException {
        assertTrue(Descriptor.parse("O:SYD:").belongsTo(Set.of("SY", "BA")));
        assertFalse(Descriptor.parse("O:WDD:").belongsTo(Set.of("SY", "BA")));
        assertFalse(Descriptor.parse("D:").belongsTo(Set.of("SY", "BA")));
    }

    @ParameterizedTest
    @CsvSource(delimiter = '=', value = {
        "O:BAD:(D;;0xd0156;;;WD)(A;OICIID;FA;;;WD) = true",
        "D:(D;OICI;FA;;;WD) = true",
        "D:(A;;FA;;;WD)(D;;FA;;;WD) = false",
        "D:(D;OICIIO;FA;;;WD) = false",
        "D:AI(D;ID;FA;;;WD) = false",
        "D:(D;;FA;;;BU) = false",
        "D: = false",
        "O:BA = false",
    })
    void knowsWhetherEverybodyIsDeniedSomethingBeforeAllElse(String text, boolean out) throws IOException {
        assertEquals(out, Descriptor.parse(text).deniesEverybodyFirst());
    }

    @Test
    void givesItsRightsAloneOrWithItsOwner() throws IOException {
        Descriptor descriptor = Descriptor.parse("O:BAG:SYD:P(A;;FA;;;SY)");

        assertEquals("D:P(A;;FA;;;SY)", descriptor.only(false).text());
        assertEquals("O:BAD:P(A;;FA;;;SY)", descriptor.only(true).text());
    }

    @ParameterizedTest
    @ValueSource(strings = {"O:BA", "O:BAD:NO_ACCESS_CONTROL",
        "O:BAD:PNO_ACCESS_CONTROL", "O:BAD:(A;;FR;;;WD)", "O:BAD:(A;;FA;;;SY)(A;;0x1;;;S-1-5-21-1-2-3-4)",
        "O:BAD:(XA;;FA;;;SY;(@User.x==1))", "O:BAD:(OA;;CR;;;SY)", "O:BAD:(A;;FA;;;SY;(x))"})
    void grantsSomethingToOthersOrMayDo(String text) throws IOException {
        assertFalse(Descriptor.parse(text).grantsOnly(Set.of("SY", "BA")));
    }
}
