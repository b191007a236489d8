package com.qarvo.kel.util.endtoend;

import com.sun.jna.Pointer;
import com.sun.jna.WString;
import com.sun.jna.platform.win32.COM.COMUtils;
import com.sun.jna.platform.win32.COM.Unknown;
import com.sun.jna.platform.win32.Guid.CLSID;
import com.sun.jna.platform.win32.Guid.IID;
import com.sun.jna.platform.win32.Guid.REFIID;
import com.sun.jna.platform.win32.Ole32;
import com.sun.jna.platform.win32.WTypes;
import com.sun.jna.platform.win32.WinNT.HRESULT;
import com.sun.jna.ptr.PointerByReference;
import java.nio.file.Path;

/** Files that the shell itself makes, through its own interfaces. */
final class ShellObjects {
    private static final CLSID SHELL_LINK = new CLSID("{00021401-0000-0000-C000-000000000046}");
    private static final IID SHELL_LINK_INTERFACE = new IID("{000214F9-0000-0000-C000-000000000046}");
    private static final IID PERSIST_FILE = new IID("{0000010B-0000-0000-C000-000000000046}");

    private ShellObjects() {
    }

    /** A COM object whose methods are called by their place in its table. */
    private static final class ComObject extends Unknown implements AutoCloseable {
        ComObject(PointerByReference object) {
            super(object.getValue());
        }

        void call(int place, Object... arguments) {
            Object[] all = new Object[arguments.length + 1];
            all[0] = getPointer();
            System.arraycopy(arguments, 0, all, 1, arguments.length);
            COMUtils.checkRC((HRESULT) _invokeNativeObject(place, all, HRESULT.class));
        }

        @Override
        public void close() {
            Release();
        }
    }

    /** Saves a shortcut; COM must be running on this thread. */
    static void saveShortcut(Path file, Path target) {
        PointerByReference made = new PointerByReference();
        COMUtils.checkRC(Ole32.INSTANCE.CoCreateInstance(SHELL_LINK, Pointer.NULL, WTypes.CLSCTX_INPROC_SERVER,
                SHELL_LINK_INTERFACE, made));
        try (ComObject link = new ComObject(made)) {
            link.call(20, new WString(target.toString()));
            PointerByReference persist = new PointerByReference();
            COMUtils.checkRC(link.QueryInterface(new REFIID(PERSIST_FILE), persist));
            try (ComObject persistFile = new ComObject(persist)) {
                persistFile.call(6, new WString(file.toString()), 1);
            }
        }
    }
}
