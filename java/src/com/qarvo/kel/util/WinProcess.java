package com.qarvo.kel.util;

import java.io.Closeable;
import java.io.IOException;

/**
 * A child process started under another account, made by {@link WindowsUtil#createProcessAsUserN} and
 * {@link WindowsUtil#createProcessAsUserSession}.
 *
 * <p>It owns the process handle, the read ends of the child's standard output and standard error and, for a named
 * account, the account's token and loaded profile. All of it stays open until {@link #close};
 * nothing collects a forgotten one. Read both streams, each on a thread of its own: a child whose pipe is full stands
 * still.
 */
public class WinProcess implements Closeable {
    private final long handle;
    private final WinPipe standardError;
    private final WinPipe standardOutput;
    private final long tokenHandle;
    private final long profileHandle;
    private final NativeResource resource;

    /**
     * Takes over a started process.
     *
     * @param handle the handle cell of the process
     * @param standardError the read end of its standard error
     * @param standardOutput the read end of its standard output
     * @param tokenHandle the handle cell of the account's token, or 0
     * @param profileHandle the handle cell of the account's loaded profile, or 0
     */
    public WinProcess(long handle, WinPipe standardError, WinPipe standardOutput, long tokenHandle,
            long profileHandle) {
        this.handle = handle;
        this.standardError = standardError;
        this.standardOutput = standardOutput;
        this.tokenHandle = tokenHandle;
        this.profileHandle = profileHandle;
        this.resource = new NativeResource(this::free);
    }

    /**
     * Gives the handle cell of the process, for the methods of {@link WindowsUtil} that take one. It stays owned by
     * this object, and must not be used after {@link #close}.
     *
     * @return the handle cell of the process
     */
    public long getHandle() {
        return handle;
    }

    /**
     * Gives the stream that the child's standard error arrives on.
     *
     * @return the read end of the child's standard error
     */
    public WinPipe getStandardError() {
        return standardError;
    }

    /**
     * Gives the stream that the child's standard output arrives on.
     *
     * @return the read end of the child's standard output
     */
    public WinPipe getStandardOutput() {
        return standardOutput;
    }

    /**
     * Gives the handle cell of the account's token.
     *
     * @return the handle cell, or 0 when the process was started in a session
     */
    public long getTokenHandle() {
        return tokenHandle;
    }

    /**
     * Gives the handle cell of the account's loaded profile.
     *
     * @return the handle cell, or 0 when the process was started in a session
     */
    public long getProfileHandle() {
        return profileHandle;
    }

    /**
     * Waits until the process has ended, without a time limit; an interrupt of the thread does not end the wait.
     *
     * @return the exit code
     * @throws IOException when the wait fails, or the exit code cannot be read
     * @throws IllegalStateException when this object is closed
     */
    public int waitFor() throws IOException {
        enter();
        try {
            WindowsUtil windows = new WindowsUtil();
            if (windows.waitForSingleObject(handle) < 0) {
                throw new IOException("The wait for the process failed.");
            }
            return windows.exitValue(handle);
        } finally {
            resource.leave();
        }
    }

    /**
     * Gives the exit code.
     *
     * @return the exit code, 259 while the process runs
     * @throws IOException when the system refuses
     * @throws IllegalStateException when this object is closed
     */
    public int exitValue() throws IOException {
        enter();
        try {
            return new WindowsUtil().exitValue(handle);
        } finally {
            resource.leave();
        }
    }

    /**
     * Ends the process at once, with exit code 0.
     *
     * @throws IOException when the system refuses, as it does for a process that has ended
     * @throws IllegalStateException when this object is closed
     */
    public void end() throws IOException {
        enter();
        try {
            new WindowsUtil().endProcess(handle);
        } finally {
            resource.leave();
        }
    }

    /**
     * Closes both streams and the process handle and unloads the account's profile; a second call does nothing. The
     * process itself goes on. A wait or read in progress on another thread goes on too, and what it uses is given
     * back when it returns.
     */
    @Override
    public void close() {
        standardError.close();
        standardOutput.close();
        resource.close();
    }

    private void enter() {
        if (!resource.enter()) {
            throw new IllegalStateException("The process is closed.");
        }
    }

    private void free() {
        WindowsUtil windows = new WindowsUtil();
        windows.closeHandle(handle);
        if (tokenHandle != 0 && profileHandle != 0) {
            windows.unloadUserProfile(tokenHandle, profileHandle);
        }
    }
}
