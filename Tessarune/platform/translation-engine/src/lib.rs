//! The translation engine behind a few C functions. `TranslationEngineABI.h` declares and documents
//! them; a change here needs the same change there.

use std::cell::RefCell;
use std::panic::{catch_unwind, AssertUnwindSafe};
use std::sync::Once;

use fxtranslate::engine::Engine;
use fxtranslate::remote;

/// Text that the receiver does not own: an argument is valid during the call, a result is static.
#[repr(C)]
pub struct BorrowedText {
    data: *const u8,
    length: usize,
}

/// Text that the caller owns and must free with `tessarune_text_free`.
#[repr(C)]
pub struct OwnedText {
    data: *mut u8,
    length: usize,
}

/// Where the catalogue of models is published, and the major version that this engine reads.
#[repr(C)]
pub struct CatalogueSource {
    endpoint: BorrowedText,
    collection: BorrowedText,
    attachments: BorrowedText,
    major_version: u64,
}

impl BorrowedText {
    const fn of(text: &'static str) -> BorrowedText {
        BorrowedText {
            data: text.as_ptr(),
            length: text.len(),
        }
    }

    /// Invalid UTF-8 becomes replacement characters.
    ///
    /// # Safety
    /// `data` is valid for `length` bytes, or `length` is 0.
    unsafe fn read(&self) -> String {
        if self.length == 0 {
            return String::new();
        }
        String::from_utf8_lossy(std::slice::from_raw_parts(self.data, self.length)).into_owned()
    }
}

impl OwnedText {
    fn new(text: String) -> OwnedText {
        let bytes = Box::into_raw(text.into_bytes().into_boxed_slice());
        OwnedText {
            data: bytes.cast(),
            length: bytes.len(),
        }
    }
}

thread_local! {
    static LAST_PANIC: RefCell<String> = const { RefCell::new(String::new()) };
}

/// Keeps panics from printing to standard error, which may be a terminal that shows captions.
fn keep_panics_quiet() {
    static ONCE: Once = Once::new();
    ONCE.call_once(|| {
        std::panic::set_hook(Box::new(|panic| {
            LAST_PANIC.with(|last| *last.borrow_mut() = panic.to_string());
        }));
    });
}

fn guarded<T>(work: impl FnOnce() -> Result<T, String>) -> Result<T, String> {
    keep_panics_quiet();
    catch_unwind(AssertUnwindSafe(work))
        .unwrap_or_else(|_| Err(LAST_PANIC.with(|last| last.take())))
}

/// Fails if the processor lacks the instructions that the engine's arithmetic is compiled for.
/// Without this check, the first such instruction would end the program.
fn require_processor() -> Result<(), String> {
    #[cfg(target_arch = "x86_64")]
    if !std::arch::is_x86_feature_detected!("avx2") {
        return Err("this processor has no AVX2, which the translation engine needs".into());
    }
    #[cfg(target_arch = "aarch64")]
    if !std::arch::is_aarch64_feature_detected!("i8mm") {
        return Err("this processor has no I8MM, which the translation engine needs".into());
    }
    Ok(())
}

/// # Safety
/// The three texts are valid during the call, `failure` is valid for writing.
#[no_mangle]
pub unsafe extern "C" fn tessarune_engine_load(
    model: BorrowedText,
    source_vocabulary: BorrowedText,
    target_vocabulary: BorrowedText,
    failure: *mut OwnedText,
) -> *mut Engine {
    let loaded = guarded(|| {
        require_processor()?;
        Engine::load_mmapped(
            model.read(),
            source_vocabulary.read(),
            target_vocabulary.read(),
        )
    });
    match loaded {
        Ok(engine) => Box::into_raw(Box::new(engine)),
        Err(reason) => {
            failure.write(OwnedText::new(reason));
            std::ptr::null_mut()
        }
    }
}

/// # Safety
/// `engine` came from `tessarune_engine_load` on this thread and was not freed, `text` is valid
/// during the call, `result` is valid for writing.
#[no_mangle]
pub unsafe extern "C" fn tessarune_engine_translate(
    engine: *const Engine,
    text: BorrowedText,
    result: *mut OwnedText,
) -> bool {
    let translated = guarded(|| Ok((*engine).translate_long(&text.read())));
    let is_translated = translated.is_ok();
    result.write(OwnedText::new(translated.unwrap_or_else(|reason| reason)));
    is_translated
}

/// # Safety
/// `engine` came from `tessarune_engine_load` on this thread and is not used afterwards.
#[no_mangle]
pub unsafe extern "C" fn tessarune_engine_free(engine: *mut Engine) {
    let _ = guarded(|| {
        drop(Box::from_raw(engine));
        Ok(())
    });
}

/// # Safety
/// `text` came from one of these functions and is not used afterwards.
#[no_mangle]
pub unsafe extern "C" fn tessarune_text_free(text: OwnedText) {
    drop(Box::from_raw(std::ptr::slice_from_raw_parts_mut(
        text.data,
        text.length,
    )));
}

#[no_mangle]
pub extern "C" fn tessarune_catalogue_source() -> CatalogueSource {
    CatalogueSource {
        endpoint: BorrowedText::of(remote::PROD_ENDPOINT),
        collection: BorrowedText::of(remote::COLLECTION),
        attachments: BorrowedText::of(remote::CDN_ROOT),
        major_version: remote::SUPPORTED_MAJOR,
    }
}
